// A mail store that a test may damage at will, with the agent loaded as a host loads it.
#pragma once

#include "include/tuk/AgentAbi.h"
#include "tests/support/HostWalk.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// Agent keys of two clients.
extern const char kEudoraKey[];
extern const char kNetscapeKey[];

// An Eudora message: its delimiter, then headers, a blank line and a body.
std::string eudoraMessage(const std::string &subject, const std::string &body = "Body.\r\n");

class HostileStoreTest : public ::testing::Test {
protected:
  // A private registry and time zone; MailPath of the Eudora agent names `mail`.
  void SetUp() override;
  void TearDown() override;

  // Brings the agent up with `key`, whose MailPath is `mail` (done by SetUp for Eudora).
  void startAgent(const char *key, LogSink sink = nullptr);
  const AgentEntryTable &entries() const { return agent_.entries(); }

  // The host's calls of tests/support/HostWalk.h on this agent.
  int32_t findFirst(AgentHandle &search, KeptRecord &record) {
    return ::findFirst(entries(), search, record);
  }
  int32_t findNext(AgentHandle search, KeptRecord &record) {
    return ::findNext(entries(), search, record);
  }
  StoreWalk walk(size_t limit = 1000000) { return walkRecords(entries(), limit); }
  int32_t reopen(const KeptRecord &record, std::string *body = nullptr) {
    return ::reopen(entries(), record, body);
  }

  TempDir dir;
  std::string mail; // the mail folder

private:
  LoadedAgent agent_;
  bool started_ = false;
};
