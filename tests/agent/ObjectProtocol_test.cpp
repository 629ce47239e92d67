// A host's road to one message: a record it built, keepObject, openObject, the body stream,
// the properties, closeObject; for every client, through the loaded library.
#include "store/MailMsg.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/AgentSession.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/stat.h>

namespace {

struct ClientStore {
  const char *key;
  std::string prefix;  // bytes ahead of the message in the mailbox
  std::string suffix;  // bytes behind it
};

const std::string kMessage = "x\r\nSubject: Hello\r\nFrom: ann@example.org\r\n\r\nThe body.\r\n";

void PrintTo(const ClientStore &store, std::ostream *out) { *out << store.key; }

std::vector<ClientStore> clientStores() {
  return {
      {"Software\\Tuk\\Agents\\MHEudora", "From ???@??? Mon\r\n", "From ???@??? next"},
      {"Software\\Tuk\\Agents\\MHInternet", std::string("\0\x7F\0\x7F", 4),
       std::string("\0\x7F\0\x7Fnext", 8)},
      {"Software\\Tuk\\Agents\\MHNetscape", "From a b c 1 01:02:03 1998\n",
       "From a b c 1 01:02:03 1998\nnext"},
      {"Software\\Tuk\\Agents\\MHPegasus", std::string(128, 'h'), "\n\n\x1anext"},
  };
}

int32_t stampOf(const std::string &path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 ? static_cast<int32_t>(status.st_mtime) : 0;
}

class ObjectProtocolTest : public ::testing::TestWithParam<ClientStore> {
protected:
  void SetUp() override {
    setenv("TZ", "UTC", 1);
    mailbox = dir.file("box");
    writeFile(mailbox, GetParam().prefix + kMessage + GetParam().suffix);
    agent.init(GetParam().key);
  }
  void TearDown() override { agent.entries().terminateAgent(); }

  RecordBuffer recordFor(uint32_t offset, uint32_t length) {
    const std::string bytes = readFile(mailbox).substr(offset, length);
    return RecordBuffer(mailbox, offset, length, referenceChecksum(bytes), stampOf(mailbox));
  }
  uint32_t messageOffset() const { return static_cast<uint32_t>(GetParam().prefix.size()); }

  TempDir dir;
  std::string mailbox;
  LoadedAgent agent;
};

TEST_P(ObjectProtocolTest, OpensReadsAndClosesTheMessageARecordNames) {
  const AgentEntryTable &e = agent.entries();
  RecordBuffer record = recordFor(messageOffset(), static_cast<uint32_t>(kMessage.size()));
  EXPECT_EQ(1, e.keepObject(record.get(), 0));

  AgentHandle object = 0;
  int32_t time = 0;
  ASSERT_EQ(StatusOk, e.openObject(&object, record.get(), &time));
  EXPECT_EQ(34214400, time);  // no Date: 1 February 1971, 00:00:00 UTC

  std::string body;
  char buffer[7];
  uint32_t got = 0;
  while (e.readObject(object, buffer, sizeof buffer, &got) == StatusOk)
    body.append(buffer, got);
  EXPECT_EQ("The body.\r\n", body);
  EXPECT_EQ(0u, got);

  uint32_t position = 0;
  EXPECT_EQ(StatusOk, e.seekObject(object, 2, 0));
  EXPECT_EQ(StatusOk, e.tellObject(object, &position));
  EXPECT_EQ(body.size() - 1, position);
  EXPECT_EQ(StatusSeekOutOfRange, e.seekObject(object, 0, static_cast<int32_t>(body.size())));

  uint32_t used = 0, count = 0;
  EXPECT_EQ(StatusPropertiesTooLarge, e.getObjectProperties(object, nullptr, 0, &used, &count));
  std::vector<unsigned char> properties(used);
  EXPECT_EQ(StatusOk, e.getObjectProperties(object, properties.data(), used, &used, &count));
  EXPECT_EQ(7u, count);

  EXPECT_EQ(StatusOk, e.closeObject(object));
}

TEST_P(ObjectProtocolTest, ARecordThatNoLongerFitsGivesOpenFailed) {
  const AgentEntryTable &e = agent.entries();
  const uint32_t size = static_cast<uint32_t>(readFile(mailbox).size());
  const uint32_t offset = messageOffset();
  AgentHandle object = 0;
  int32_t time = 0;

  // A range that ends exactly at the end of the file opens; one byte more does not.
  RecordBuffer toEnd = recordFor(offset, size - offset);
  ASSERT_EQ(StatusOk, e.openObject(&object, toEnd.get(), &time));
  EXPECT_EQ(StatusOk, e.closeObject(object));
  RecordBuffer pastEnd(mailbox, offset, size - offset + 1, toEnd->checksum);
  EXPECT_EQ(StatusOpenFailed, e.openObject(&object, pastEnd.get(), &time));
  EXPECT_EQ(AGENT_INVALID_HANDLE, object);

  // Offset plus length beyond 4 GiB must not wrap round into the file.
  RecordBuffer wrapped(mailbox, 0xFFFFFFF0u, 0x20, 0);
  EXPECT_EQ(StatusOpenFailed, e.openObject(&object, wrapped.get(), &time));

  // A changed checksum fails; a changed stamp alone does not.
  RecordBuffer changed = recordFor(offset, 10);
  changed->checksum ^= 1;
  EXPECT_EQ(StatusOpenFailed, e.openObject(&object, changed.get(), &time));
  RecordBuffer oldStamp = recordFor(offset, 10);
  oldStamp->mailboxStamp -= 1000;
  EXPECT_EQ(0, e.keepObject(oldStamp.get(), 0));
  ASSERT_EQ(StatusOk, e.openObject(&object, oldStamp.get(), &time));
  EXPECT_EQ(StatusOk, e.closeObject(object));
}

TEST_P(ObjectProtocolTest, AMailboxThatCannotBeOpenedGivesMailFileFailed) {
  const AgentEntryTable &e = agent.entries();
  AgentHandle object = 12345;
  int32_t time = 0;
  RecordBuffer directory(dir.path(), 0, 1, 0);
  EXPECT_EQ(StatusMailFileFailed, e.openObject(&object, directory.get(), &time));
  RecordBuffer missing(dir.file("missing"), 0, 1, 0);
  EXPECT_EQ(StatusMailFileFailed, e.openObject(&object, missing.get(), &time));
  writeFile(dir.file("empty"), "");
  RecordBuffer empty(dir.file("empty"), 0, 0, 0);
  EXPECT_EQ(StatusMailFileFailed, e.openObject(&object, empty.get(), &time));
  EXPECT_EQ(12345u, object);  // not written
  EXPECT_EQ(0, e.keepObject(missing.get(), 0));
}

INSTANTIATE_TEST_SUITE_P(Clients, ObjectProtocolTest, ::testing::ValuesIn(clientStores()),
                         [](const auto &info) {
                           const std::string key = info.param.key;
                           return key.substr(key.rfind("MH") + 2);
                         });

TEST(KeepObject, GoesByTheMailboxStamp) {
  TempDir dir;
  LoadedAgent agent;
  agent.init("MHEudora");
  const std::string path = dir.file("In.mbx");
  writeFile(path, "mail");
  setFileTime(path, 1000000);
  RecordBuffer record(path, 0, 4, 0, 1000000);
  EXPECT_EQ(1, agent.entries().keepObject(record.get(), 0));
  EXPECT_EQ(1, agent.entries().keepObject(record.get(), 0xFFFFFFFF));  // the word is not read
  setFileTime(path, 1000001);
  EXPECT_EQ(0, agent.entries().keepObject(record.get(), 0));
  setFileTime(path, 999999);  // a stamp that went backwards still counts as kept
  EXPECT_EQ(1, agent.entries().keepObject(record.get(), 0));
  agent.entries().terminateAgent();
}

// White-box: the signature test guards every object entry.
TEST(ObjectSignature, AnOverwrittenSignatureIsRefusedAndLogged) {
  TempDir dir;
  CapturedLog::lines().clear();
  AgentSession session("MHEudora", "EN", CapturedLog::sink);
  const AgentEntryTable &e = session.entries();
  e.setLogFlag(1);
  const std::string path = dir.file("In.mbx");
  writeFile(path, "x\n\nbody");
  RecordBuffer record(path, 0, 7, referenceChecksum("x\n\nbody"));
  AgentHandle object = 0;
  int32_t time;
  ASSERT_EQ(StatusOk, e.openObject(&object, record.get(), &time));
  uint32_t *signature = &reinterpret_cast<CMailMsg *>(object)->signature;
  *signature = 0x12345678;
  char buffer[8];
  uint32_t got = 0, position = 0, used = 0, count = 0;
  EXPECT_EQ(StatusBadSignature, e.readObject(object, buffer, 8, &got));
  EXPECT_EQ(StatusBadSignature, e.seekObject(object, 0, 0));
  EXPECT_EQ(StatusBadSignature, e.tellObject(object, &position));
  EXPECT_EQ(StatusBadSignature, e.getObjectProperties(object, buffer, 8, &used, &count));
  EXPECT_EQ(StatusBadSignature, e.closeObject(object));
  EXPECT_TRUE(CapturedLog::contains(".\\mhmail|Bad signature: 0x12345678"));
  *signature = 0xDEADBEEF;
  EXPECT_EQ(StatusOk, e.closeObject(object));
  EXPECT_EQ(StatusBadSignature, e.closeObject(0));
  EXPECT_EQ(StatusBadSignature, e.readObject(AGENT_INVALID_HANDLE, buffer, 8, &got));
  e.setLogFlag(0);
}

} // namespace
