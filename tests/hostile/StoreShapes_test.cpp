// Stores of hostile shapes: links that loop, trees too deep, a crowded folder, names no mail
// client would choose, a mailbox over 4 GiB, a pipe where a mail file should be, and folders
// or mailboxes the agent may not read. (A folder where a mail file should be: the pairing's
// tests in store/MailboxScan.)
#include "platform/FilesFaults.h"
#include "store/MFNList.h"
#include "tests/support/AgentSession.h"
#include "tests/support/AgentStore.h"
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
using Clock = std::chrono::steady_clock;

using StoreShapesTest = AgentStoreTest;

TEST_F(StoreShapesTest, LinksThatLoopOrLeadOutOfTheStoreAreNeverFollowedAsFolders) {
  Watchdog watchdog(60);
  mailbox("Real");
  makeDirs(mail + "/Sub");
  ASSERT_EQ(0, symlink("..", (mail + "/Sub/up").c_str()));
  ASSERT_EQ(0, symlink(mail.c_str(), (mail + "/Sub/self").c_str()));
  ASSERT_EQ(0, symlink("/", (mail + "/root").c_str()));
  // Mail files that are links: to each other, to a folder, to a device, to a pipe.
  ASSERT_EQ(0, symlink("Loop2.mbx", (mail + "/Loop1.mbx").c_str()));
  ASSERT_EQ(0, symlink("Loop1.mbx", (mail + "/Loop2.mbx").c_str()));
  ASSERT_EQ(0, symlink("Sub", (mail + "/Folder.mbx").c_str()));
  ASSERT_EQ(0, symlink("/dev/zero", (mail + "/Zero.mbx").c_str()));
  ASSERT_EQ(0, mkfifo((mail + "/Pipe.mbx").c_str(), 0600));
  for (const char *stem : {"Loop1", "Loop2", "Folder", "Zero", "Pipe"})
    writeFile(mail + "/" + stem + ".toc", "");
  const StoreWalk found = walk();
  EXPECT_EQ(std::vector<std::string>{mail + "/Real.mbx"}, pathsOf(found));
  EXPECT_EQ(StatusNoMoreObjects, found.lastStatus);
}

TEST_F(StoreShapesTest, FourteenFoldersDeepIsIndexedAndAnythingDeeperEndsTheScan) {
  std::string deep = mail;
  for (int level = 1; level <= 14; ++level)
    deep += "/d" + std::to_string(level);
  mailbox(deep.substr(mail.size() + 1) + "/In", eudoraMessage("deep"));
  EXPECT_EQ(1u, walk().records.size());
  makeDirs(deep + "/d15");
  EXPECT_EQ(StatusNoMoreObjects, walk().firstStatus);
  ASSERT_EQ(0, rmdir((deep + "/d15").c_str()));
  std::string deeper = "e";
  for (int level = 2; level <= 100; ++level)
    deeper += "/e";
  mailbox(deeper + "/In", eudoraMessage("deeper"));
  const auto start = Clock::now();
  EXPECT_EQ(StatusNoMoreObjects, walk().firstStatus);
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
}

// Bounds a blow-up, not a speed: under the sanitizers the pairing takes about half a second
// and the walk of all 10,000 mailboxes a few.
TEST_F(StoreShapesTest, TwentyThousandFilesInOneFolder) {
  Watchdog watchdog(300);
  constexpr int kMailboxes = 10000;
  for (int at = 0; at < kMailboxes; ++at)
    mailbox("Box" + std::to_string(at), eudoraMessage(std::to_string(at)));
  auto start = Clock::now();
  CMailFilenameList list;
  EXPECT_EQ(kMailboxes, list.findMailboxes(mail.c_str(), ".MBX", ".TOC"));
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
  start = Clock::now();
  const StoreWalk found = walk();
  EXPECT_EQ(static_cast<size_t>(kMailboxes), found.records.size());
  EXPECT_EQ(StatusNoMoreObjects, found.lastStatus);
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(60));
}

TEST_F(StoreShapesTest, NamesWithBlanksBackslashesLineBreaksAndBytesThatAreNotUtf8) {
  const std::vector<std::string> stems = {"With Blank", " leading",   "trailing ",    "back\\slash",
                                          "new\nline",  "tab\there",  "\xFF\xFE\xE9", "%s%n%x",
                                          "-dash",      "semi;colon", "quote\"d",     "star*.*"};
  for (const std::string &stem : stems)
    mailbox(stem, eudoraMessage(stem, "Body of " + stem + "\r\n"));
  startLogging(); // the log sees every name too
  const StoreWalk found = walk();
  ASSERT_EQ(stems.size(), found.records.size());
  EXPECT_TRUE(CapturedLog::contains("Mailbox: " + mail + "/%s%n%x.mbx"));
  for (const KeptRecord &record : found.records) {
    std::string body;
    EXPECT_EQ(StatusOk, reopen(record, &body)) << record.path;
    const std::string stem =
        record.path.substr(mail.size() + 1, record.path.size() - mail.size() - 5);
    EXPECT_EQ("Body of " + stem + "\r\n", body);
    RecordBuffer buffer(record.path, record.offset, record.length, record.checksum, record.stamp);
    EXPECT_EQ(1, entries().keepObject(buffer.get(), 0)) << record.path;
  }
}

TEST_F(StoreShapesTest, AMailboxOverFourGibibytesIsReadByTheLowPartOfItsSize) {
  const std::string head = eudoraMessage("one") + eudoraMessage("two");
  mailbox("Huge", head);
  const std::string path = mail + "/Huge.mbx";
  // Sparse: 4 GiB and a page, of which only the head is written.
  if (truncate(path.c_str(), (off_t{1} << 32) + 4096) != 0)
    GTEST_SKIP() << "the file system refuses a file of 4 GiB: " << std::strerror(errno);
  const StoreWalk found = walk();
  ASSERT_EQ(2u, found.records.size());
  EXPECT_EQ(12u, found.records[0].offset);
  // The last message runs to the end of what the low part of the size covers.
  EXPECT_EQ(4096u, found.records[1].offset + found.records[1].length);
  for (const KeptRecord &record : found.records)
    EXPECT_EQ(StatusOk, reopen(record));
  // Exactly 4 GiB reads as an empty file: no message, and the walk goes on.
  mailbox("Next", eudoraMessage("next"));
  ASSERT_EQ(0, truncate(path.c_str(), off_t{1} << 32));
  EXPECT_EQ(std::vector<std::string>{mail + "/Next.mbx"}, pathsOf(walk()));
}

TEST_F(StoreShapesTest, AFolderThatCannotBeReadEndsTheScanAndAMailboxIsPassedOver) {
  mailbox("A");
  mailbox("B");
  mailbox("Locked/C");
  EXPECT_EQ(3u, walk().records.size());
  // No partial result: one folder anywhere that cannot be listed, and there is no object at
  // all. Root reads every folder, so there the listing's fault injection stands in for the
  // lock: the walk opens the mail folder first, then Locked.
  if (geteuid() == 0)
    failFileOperationsAfter(FileOperation::OpenDirectory, 1, EACCES);
  else
    ASSERT_EQ(0, chmod((mail + "/Locked").c_str(), 0));
  EXPECT_EQ(StatusNoMoreObjects, walk().firstStatus);
  clearFileOperationFailures();
  ASSERT_EQ(0, chmod((mail + "/Locked").c_str(), 0755));
  failNextFileOperations(FileOperation::OpenDirectory, EACCES);
  EXPECT_EQ(StatusNoMoreObjects, walk().firstStatus);
  // A mailbox that cannot be opened is passed over without a word: the first one, then one
  // that the walk comes to later.
  failNextFileOperations(FileOperation::OpenFile, EACCES);
  StoreWalk found = walk();
  EXPECT_EQ((std::vector<std::string>{mail + "/B.mbx", mail + "/Locked/C.mbx"}), pathsOf(found));
  failFileOperationsAfter(FileOperation::OpenFile, 1, EACCES);
  found = walk();
  clearFileOperationFailures();
  EXPECT_EQ((std::vector<std::string>{mail + "/A.mbx", mail + "/Locked/C.mbx"}), pathsOf(found));
}
} // namespace
