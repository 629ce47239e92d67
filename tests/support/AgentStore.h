// A mail store of the test's own with the agent loaded as a host loads it: a private registry
// whose MailPath names the store, and the time zone UTC. A test may damage the store at will.
#pragma once

#include "include/tuk/AgentAbi.h"
#include "tests/support/HostWalk.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

// Agent keys of two clients.
extern const char kEudoraKey[];
extern const char kNetscapeKey[];

// An Eudora message: its delimiter, then headers, a blank line and a body.
std::string eudoraMessage(const std::string &subject, const std::string &body = "Body.\r\n");

class AgentStoreTest : public ::testing::Test {
protected:
  // The registry, the zone and the mail folder; the Eudora agent, started.
  void SetUp() override;
  void TearDown() override;
  // Ends the agent's life, if it has one, and brings it up with `key`, whose MailPath is made
  // `mail` first.
  AgentResult startAgent(const std::string &key, LogSink sink = nullptr,
                         const std::string &language = "EN");
  // startAgent with the agent's log on and captured (CapturedLog), from a clean slate.
  void startLogging(const std::string &key = kEudoraKey);
  const AgentEntryTable &entries() const { return agent_.entries(); }
  // Writes the Eudora mailbox `stem`, a path below `mail` without extension, and its control file.
  void mailbox(const std::string &stem, const std::string &bytes = eudoraMessage("x"));
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
  // The mailboxes of a walk's records, in order.
  static std::vector<std::string> pathsOf(const StoreWalk &walk);
  TempDir dir;
  const std::string mail = dir.file("mail");

private:
  LoadedAgent agent_;
  bool started_ = false;
};
