// A host's road to the messages of each client's store: the walk, a record it kept, keepObject,
// openObject, the body stream, the properties, closeObject; through the loaded library.
#include "tests/support/AgentSession.h"
#include "tests/support/AgentStore.h"
#include "tests/support/ClientStores.h"
#include "tests/support/Reference.h"
#include <sys/stat.h>

namespace {
const TestMessage kUndated = {"", "ann@example.org", "bob@example.org",
                              "", "Hello",           "The body.\nFrom here to there and back\n"};
const TestMessage kDated = {"7 May 1997 11:02:33 GMT",
                            "cy@example.org",
                            "ann@example.org",
                            "",
                            "Second",
                            std::string("Zero \0 byte\n\n>From quoted\n", 26)};
const TestMessage kWork = {"Wed, 7 May 1997 11:02:33 +0000",
                           "dan@example.org",
                           "ann@example.org",
                           "",
                           "Work",
                           "Work mail\n"};
constexpr int32_t kNoDateTime = 34214400; // 1 February 1971, 00:00:00 UTC
constexpr int32_t kDatedTime = 863002953; // 7 May 1997 11:02:33 UTC

int32_t stampOf(const std::string &path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 ? static_cast<int32_t>(status.st_mtime) : 0;
}

class ObjectProtocolTest : public AgentStoreTest,
                           public ::testing::WithParamInterface<std::string> {
protected:
  void SetUp() override {
    AgentStoreTest::SetUp();
    inbox = mailFileOf(client(), mail + "/In");
    ranges = writeMailbox(client(), mail + "/In", {kUndated, kDated});
    writeMailbox(client(), mail + "/Folders/Work", {kWork});
    writeFile(mail + "/Unpaired", "no control file");
    startAgent(agentKeyOf(client()));
  }
  const std::string &client() const { return GetParam(); }
  RecordBuffer recordFor(uint32_t offset, uint32_t length) {
    const std::string bytes = readFile(inbox).substr(offset, length);
    return RecordBuffer(inbox, offset, length, referenceChecksum(bytes), stampOf(inbox));
  }
  // openObject's status for `record`; what it opens is closed again, and when it fails it sets the
  // handle to -1 for a record that no longer fits and leaves it for a mailbox that can't be opened.
  int32_t open(RecordBuffer record) {
    AgentHandle object = 12345;
    int32_t time = 0;
    const int32_t status = entries().openObject(&object, record.get(), &time);
    if (status == StatusOk)
      EXPECT_EQ(StatusOk, entries().closeObject(object));
    else
      EXPECT_EQ(status == StatusOpenFailed ? AGENT_INVALID_HANDLE : AgentHandle{12345}, object);
    return status;
  }
  std::string inbox;
  std::vector<MessageRange> ranges;
};

TEST_P(ObjectProtocolTest, WalkFindsEveryMessageAndEveryRecordReopens) {
  const std::vector<KeptRecord> found = walkStore(entries());
  ASSERT_EQ(3u, found.size());
  const std::string work = mailFileOf(client(), mail + "/Folders/Work");
  const TestMessage *messages[] = {&kUndated, &kDated, &kWork};
  const std::string paths[] = {inbox, inbox, work};
  const int32_t times[] = {kNoDateTime, kDatedTime, kDatedTime};
  for (size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(paths[i], found[i].path) << i;
    EXPECT_EQ(bodyOf(client(), *messages[i]), found[i].body) << i;
    EXPECT_EQ(times[i], found[i].time) << i;
  }
  EXPECT_EQ(ranges[1].offset, found[1].offset);
  EXPECT_EQ(ranges[1].length, found[1].length);
}

TEST_P(ObjectProtocolTest, OpensReadsAndClosesTheMessageARecordNames) {
  const AgentEntryTable &e = entries();
  RecordBuffer record = recordFor(ranges[0].offset, ranges[0].length);
  EXPECT_EQ(1, e.keepObject(record.get(), 0));
  AgentHandle object = 0;
  int32_t time = 0;
  ASSERT_EQ(StatusOk, e.openObject(&object, record.get(), &time));
  EXPECT_EQ(kNoDateTime, time);
  std::string body;
  char buffer[7];
  uint32_t got = 0;
  while (e.readObject(object, buffer, sizeof buffer, &got) == StatusOk)
    body.append(buffer, got);
  EXPECT_EQ(bodyOf(client(), kUndated), body);
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

TEST_P(ObjectProtocolTest, ARecordThatNoLongerFitsOrAMailboxThatCannotBeOpened) {
  const uint32_t size = static_cast<uint32_t>(readFile(inbox).size());
  const uint32_t offset = ranges[0].offset;
  // A range that ends exactly at the end of the file opens; one byte more does not.
  RecordBuffer toEnd = recordFor(offset, size - offset);
  EXPECT_EQ(StatusOk, open(toEnd));
  EXPECT_EQ(StatusOpenFailed, open({inbox, offset, size - offset + 1, toEnd->checksum}));
  // Offset plus length beyond 4 GiB must not wrap round into the file.
  EXPECT_EQ(StatusOpenFailed, open({inbox, 0xFFFFFFF0u, 0x20, 0}));
  // A changed checksum fails; a changed stamp alone does not.
  RecordBuffer changed = recordFor(offset, 10);
  changed->checksum ^= 1;
  EXPECT_EQ(StatusOpenFailed, open(changed));
  RecordBuffer oldStamp = recordFor(offset, 10);
  oldStamp->mailboxStamp -= 1000;
  EXPECT_EQ(0, entries().keepObject(oldStamp.get(), 0));
  EXPECT_EQ(StatusOk, open(oldStamp));
  // A mailbox that cannot be opened: a folder, an empty file, none at all.
  writeFile(dir.file("empty"), "");
  EXPECT_EQ(StatusMailFileFailed, open({dir.path(), 0, 1, 0}));
  EXPECT_EQ(StatusMailFileFailed, open({dir.file("empty"), 0, 0, 0}));
  const RecordBuffer missing(dir.file("missing"), 0, 1, 0);
  EXPECT_EQ(StatusMailFileFailed, open(missing));
  EXPECT_EQ(0, entries().keepObject(missing.get(), 0));
}

INSTANTIATE_TEST_SUITE_P(Clients, ObjectProtocolTest, ::testing::ValuesIn(kClientNames),
                         [](const auto &info) { return info.param; });

using KeepObject = AgentStoreTest;

TEST_F(KeepObject, GoesByTheMailboxStamp) {
  const std::string path = dir.file("In.mbx");
  writeFile(path, "mail");
  setFileTime(path, 1000000);
  RecordBuffer record(path, 0, 4, 0, 1000000);
  EXPECT_EQ(1, entries().keepObject(record.get(), 0));
  EXPECT_EQ(1, entries().keepObject(record.get(), 0xFFFFFFFF)); // the word is not read
  setFileTime(path, 1000001);
  EXPECT_EQ(0, entries().keepObject(record.get(), 0));
  setFileTime(path, 999999); // a stamp that went backwards still counts as kept
  EXPECT_EQ(1, entries().keepObject(record.get(), 0));
}
} // namespace
