// A host enumerates a store with the find entries and reopens every record it was given.
#include "cmn/Registry.h"
#include "tests/support/AgentSession.h"
#include "tests/support/HostWalk.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

const char kKey[] = "Software\\Tuk\\Agents\\MHEudora";
const std::string kDelimiter = "From ???@??? ";

std::string message(const std::string &subject) {
  return kDelimiter + "Mon\r\nSubject: " + subject + "\r\nDate: 15 Jan 1998 10:00:00\r\n\r\n" +
         "Body of " + subject + ".\r\n";
}

class ObjectSearchTest : public ::testing::Test {
protected:
  void SetUp() override {
    setenv("TUK_REGISTRY", dir.file("registry.reg").c_str(), 1);
    setenv("TZ", "UTC", 1);
    mail = dir.file("mail");
    writeFile(mail + "/In.mbx", message("one") + message("two"));
    writeFile(mail + "/In.toc", "");
    writeFile(mail + "/Zed.MBX", message("zed"));
    writeFile(mail + "/Zed.toc", "");
    writeFile(mail + "/Empty.mbx", "");
    writeFile(mail + "/Empty.toc", "");
    writeFile(mail + "/Lone.mbx", message("lone"));
    writeFile(mail + "/Orphan.toc", "");
    writeFile(mail + "/Work/Deep/Box.mbx", "no delimiter at all\r\n\r\nwhole file");
    writeFile(mail + "/Work/Deep/Box.toc", "");
    writeFile(mail + "/Work/Gone.mbx", message("gone"));
    writeFile(mail + "/Work/Gone.toc", "");
    ASSERT_NE(0, SetRegValue(kKey, "MailPath", CString(mail.c_str())));
    agent.init(kKey);
  }
  void TearDown() override { agent.entries().terminateAgent(); }

  // A walk during which Gone.mbx disappears, after the list was made and before the walk
  // reaches it.
  std::vector<KeptRecord> walkWhileGoneGoes() {
    const AgentEntryTable &e = agent.entries();
    AgentHandle search = 0;
    KeptRecord record;
    EXPECT_EQ(StatusOk, findFirst(e, search, record));
    unlink((mail + "/Work/Gone.mbx").c_str());
    std::vector<KeptRecord> found;
    do {
      EXPECT_EQ(StatusOk, reopen(e, record, &record.body));
      found.push_back(record);
      record.body.clear();
    } while (findNext(e, search, record) == StatusOk);
    e.closeFindObjectHandle(search);
    return found;
  }

  TempDir dir;
  std::string mail;
  LoadedAgent agent;
};

TEST_F(ObjectSearchTest, WalksEveryMailboxInOrderAndEveryRecordReopens) {
  const std::vector<KeptRecord> found = walkWhileGoneGoes();
  ASSERT_EQ(4u, found.size());
  // The mail directory's own mailboxes first, by their control files, then deeper levels.
  EXPECT_EQ(mail + "/In.mbx", found[0].path);
  EXPECT_EQ(mail + "/In.mbx", found[1].path);
  EXPECT_EQ(mail + "/Zed.MBX", found[2].path);
  // Gone.mbx was deleted after the list was made: passed over without a word.
  EXPECT_EQ(mail + "/Work/Deep/Box.mbx", found[3].path);
  EXPECT_EQ("Body of one.\r\n", found[0].body);
  EXPECT_EQ("Body of two.\r\n", found[1].body);
  EXPECT_EQ(884858400, found[0].time);  // 15 Jan 1998 10:00:00 UTC
  EXPECT_EQ(12u, found[0].offset);
  EXPECT_EQ(12u + message("one").size(), found[1].offset);
  // A file without a delimiter is one message: the whole file.
  EXPECT_EQ(0u, found[3].offset);
  EXPECT_EQ("whole file", found[3].body);
  EXPECT_EQ(34214400, found[3].time);
}

TEST_F(ObjectSearchTest, ARecordOfExactlyItsTrueSizeFits) {
  const AgentEntryTable &e = agent.entries();
  const std::string path = mail + "/In.mbx";
  for (uint32_t extra = 17; extra <= 21; ++extra) {
    RecordBuffer record(path.size() + extra);
    std::memset(record.bytes() + 4, 0xAB, record.capacity() - 4);
    AgentHandle search = 99;
    int32_t time = 0;
    const int32_t status = e.findFirstObjectHandle(0, &search, record.get(), &time);
    if (extra == 21) {
      EXPECT_EQ(StatusOk, status);
      EXPECT_EQ(path.size() + 18, record->size);
      EXPECT_EQ(path, record->path);
      EXPECT_EQ(StatusOk, e.closeFindObjectHandle(search));
      continue;
    }
    EXPECT_EQ(StatusBufferTooSmall, status) << extra;
    EXPECT_EQ(AGENT_INVALID_HANDLE, search);
    // Below the reported size: the reported size; at it or just above: the true size.
    EXPECT_EQ(path.size() + (extra < 18 ? 18 : 21), record->size) << extra;
    EXPECT_EQ(0xABu, record.bytes()[4]) << "nothing but size is written";
    EXPECT_EQ(StatusOk, e.closeFindObjectHandle(search));
  }
}

TEST_F(ObjectSearchTest, TwoSearchesRunSideBySide) {
  const AgentEntryTable &e = agent.entries();
  RecordBuffer first, second;
  AgentHandle a = 0, b = 0;
  int32_t time = 0;
  // The host offers its capacity anew on every call.
  auto next = [&](AgentHandle search, RecordBuffer &record) {
    record->size = static_cast<uint32_t>(record.capacity());
    return e.findNextObjectHandle(search, record.get(), &time);
  };
  ASSERT_EQ(StatusOk, e.findFirstObjectHandle(0, &a, first.get(), &time));
  ASSERT_EQ(StatusOk, next(a, first));
  ASSERT_EQ(StatusOk, e.findFirstObjectHandle(0, &b, second.get(), &time));
  EXPECT_NE(a, b);
  EXPECT_EQ(12u, second->offset);  // b starts at the beginning
  ASSERT_EQ(StatusOk, next(a, first));
  EXPECT_EQ(mail + "/Zed.MBX", std::string(first->path));  // a goes on where it was
  EXPECT_EQ(StatusOk, e.closeFindObjectHandle(a));
  ASSERT_EQ(StatusOk, next(b, second));
  EXPECT_EQ(mail + "/In.mbx", second->path);
  EXPECT_EQ(StatusOk, e.closeFindObjectHandle(b));
}

TEST_F(ObjectSearchTest, StoresThatGiveNoObject) {
  const AgentEntryTable &e = agent.entries();
  RecordBuffer record;
  AgentHandle search = 42;
  int32_t time = 0;
  // No MailPath at all.
  const std::string settings = readFile(dir.file("registry.reg"));
  writeFile(dir.file("registry.reg"), "");
  EXPECT_EQ(StatusNoMoreObjects, e.findFirstObjectHandle(0, &search, record.get(), &time));
  writeFile(dir.file("registry.reg"), settings);
  // Only control files, or mailboxes that all are empty.
  ASSERT_NE(0, SetRegValue(kKey, "MailPath", CString(dir.file("mail/Work").c_str())));
  ASSERT_EQ(0, truncate((mail + "/Work/Deep/Box.mbx").c_str(), 0));
  ASSERT_EQ(0, truncate((mail + "/Work/Gone.mbx").c_str(), 0));
  EXPECT_EQ(StatusNoMoreObjects, e.findFirstObjectHandle(0, &search, record.get(), &time));
  // A directory that does not exist.
  ASSERT_NE(0, SetRegValue(kKey, "MailPath", CString(dir.file("nowhere").c_str())));
  EXPECT_EQ(StatusNoMoreObjects, e.findFirstObjectHandle(0, &search, record.get(), &time));
  // Extensions from the registry replace the defaults entirely.
  ASSERT_NE(0, SetRegValue(kKey, "MailPath", CString(mail.c_str())));
  ASSERT_NE(0, SetRegValue(kKey, "CtrlFileExt", CString(".idx")));
  EXPECT_EQ(StatusNoMoreObjects, e.findFirstObjectHandle(0, &search, record.get(), &time));
  EXPECT_EQ(42u, search);
}

} // namespace
