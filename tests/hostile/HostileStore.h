// A mail store that a test may damage at will, with the agent loaded as a host loads it, and
// a host's walk that accepts every status the agent documents instead of expecting success.
#pragma once

#include "agent/AgentAbi.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// A record as a host keeps it.
struct KeptRecord {
  std::string path;
  uint32_t offset, length, checksum;
  int32_t stamp;
};

// How a walk of the whole store ended, and what it found.
struct StoreWalk {
  std::vector<KeptRecord> records;
  int32_t firstStatus = -1; // of findFirstObjectHandle
  int32_t lastStatus = -1;  // of the last find call
};

// Agent keys of the four clients.
extern const char kEudoraKey[];
extern const char kInternetKey[];
extern const char kNetscapeKey[];
extern const char kPegasusKey[];

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

  // Starts a search; on 0 the handle is live and the record filled.
  int32_t findFirst(AgentHandle &search, KeptRecord &record);
  int32_t findNext(AgentHandle search, KeptRecord &record);
  // The whole walk, at most `limit` records, closing the search when one was open.
  StoreWalk walk(size_t limit = 1000000);
  // Opens the record and reads its body; the status of openObject.
  int32_t reopen(const KeptRecord &record, std::string *body = nullptr);

  TempDir dir;
  std::string mail; // the mail folder

private:
  LoadedAgent agent_;
  bool started_ = false;
};
