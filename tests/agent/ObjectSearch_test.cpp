// A host's searches of a store: the record's capacity, two searches at once, and the stores
// and settings that give no object at all.
#include "cmn/Registry.h"
#include "tests/support/AgentSession.h"
#include "tests/support/AgentStore.h"
#include <cstring>
#include <unistd.h>

namespace {
std::string message(const std::string &subject) {
  return "From ???@??? Mon\r\nSubject: " + subject + "\r\n\r\nBody of " + subject + ".\r\n";
}

class ObjectSearchTest : public AgentStoreTest {
protected:
  void SetUp() override {
    AgentStoreTest::SetUp();
    mailbox("In", message("one") + message("two"));
    writeFile(mail + "/Zed.MBX", message("zed"));
    writeFile(mail + "/Zed.toc", "");
    mailbox("Work/Box", message("box"));
    writeFile(mail + "/Work/Deep/Only.toc", "");
  }
};

TEST_F(ObjectSearchTest, ARecordOfExactlyItsTrueSizeFits) {
  const AgentEntryTable &e = entries();
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
  }
}

TEST_F(ObjectSearchTest, TwoSearchesRunSideBySide) {
  AgentHandle a = 0, b = 0;
  KeptRecord first, second;
  ASSERT_EQ(StatusOk, findFirst(a, first));
  ASSERT_EQ(StatusOk, findNext(a, first));
  ASSERT_EQ(StatusOk, findFirst(b, second));
  EXPECT_NE(a, b);
  EXPECT_EQ(12u, second.offset); // b starts at the beginning
  ASSERT_EQ(StatusOk, findNext(a, first));
  EXPECT_EQ(mail + "/Zed.MBX", first.path); // a goes on where it was
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(a));
  ASSERT_EQ(StatusOk, findNext(b, second));
  EXPECT_EQ(mail + "/In.mbx", second.path);
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(b));
}

TEST_F(ObjectSearchTest, AWalkLogsEachSubjectAndStoresThatGiveNoObject) {
  // A walk's messages keep only what its records need, but with the log on they still log the
  // subject they read.
  startLogging();
  EXPECT_EQ(4u, walk().records.size());
  EXPECT_TRUE(CapturedLog::contains(".\\MailMsg|Subject: one"));
  EXPECT_TRUE(CapturedLog::contains(".\\MailMsg|Subject: two"));
  AgentHandle search = 42;
  KeptRecord record;
  // An empty MailPath: not a walk of the whole file system from its root.
  const Watchdog watchdog(60);
  ASSERT_NE(0, SetRegValue(kEudoraKey, "MailPath", CString("")));
  EXPECT_EQ(StatusNoMoreObjects, findFirst(search, record));
  EXPECT_TRUE(CapturedLog::contains("Failed trying to get MailPath value"));
  EXPECT_FALSE(CapturedLog::contains("searching for /*.*"));
  // No MailPath at all.
  const std::string settings = readFile(dir.file("registry.reg"));
  writeFile(dir.file("registry.reg"), "");
  EXPECT_EQ(StatusNoMoreObjects, findFirst(search, record));
  writeFile(dir.file("registry.reg"), settings);
  // Only control files, or mailboxes that all are empty.
  ASSERT_NE(0, SetRegValue(kEudoraKey, "MailPath", CString((mail + "/Work").c_str())));
  ASSERT_EQ(0, truncate((mail + "/Work/Box.mbx").c_str(), 0));
  EXPECT_EQ(StatusNoMoreObjects, findFirst(search, record));
  // A directory that does not exist.
  ASSERT_NE(0, SetRegValue(kEudoraKey, "MailPath", CString(dir.file("nowhere").c_str())));
  EXPECT_EQ(StatusNoMoreObjects, findFirst(search, record));
  // Extensions from the registry replace the defaults entirely.
  ASSERT_NE(0, SetRegValue(kEudoraKey, "MailPath", CString(mail.c_str())));
  ASSERT_NE(0, SetRegValue(kEudoraKey, "CtrlFileExt", CString(".idx")));
  EXPECT_EQ(StatusNoMoreObjects, findFirst(search, record));
  EXPECT_EQ(42u, search);
}
} // namespace
