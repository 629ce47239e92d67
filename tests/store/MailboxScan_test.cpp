// The tree walk and the pairing of mail files with control files.
#include "store/MFNList.h"

#include "tests/support/AgentSession.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

std::vector<std::string> elements(const CStringList &list, const std::string &strip = "") {
  std::vector<std::string> out;
  for (POSITION at = list.GetHeadPosition(); at;) {
    std::string text = list.GetNext(at).GetString();
    if (!strip.empty() && text.compare(0, strip.size(), strip) == 0)
      text = "~" + text.substr(strip.size());
    out.push_back(text);
  }
  return out;
}

class MailboxScanTest : public ::testing::Test {
protected:
  std::vector<std::string> mailboxes(const std::string &mailExt, const std::string &ctrlExt,
                                     int expectedCount) {
    CMailFilenameList list;
    EXPECT_EQ(expectedCount, list.findMailboxes(dir.path().c_str(), mailExt.c_str(), ctrlExt.c_str()));
    return elements(list, dir.path());
  }
  void touch(const std::string &relative) { writeFile(dir.file(relative), "x"); }

  AgentSession session;
  TempDir dir;
};

// Inside a directory, names are ordered as upper-cased bytes: "A.MBX" before "S".
TEST_F(MailboxScanTest, WalkListsLevelByLevel) {
  makeDirs(dir.file("A/S"));
  makeDirs(dir.file("B"));
  touch("x.mbx");
  touch("x.toc");
  touch("A/a.mbx");
  touch("B/b.toc");
  CStringList all;
  ASSERT_EQ(0, FindFiles(all, (dir.path() + "/*.*").c_str()));
  const std::vector<std::string> expected = {
      "~/.",    "~/..",     "~/A/",      "~/B/",      "~/x.mbx",   "~/x.toc",
      "~/A/.",  "~/A/..",   "~/A/a.mbx", "~/A/S/", "~/B/.",     "~/B/..",
      "~/B/b.toc", "~/A/S/.", "~/A/S/.."};
  EXPECT_EQ(expected, elements(all, dir.path()));
  EXPECT_EQ(std::vector<std::string>{"~/x.mbx"}, mailboxes(".mbx", ".toc", 1));
}

TEST_F(MailboxScanTest, FourteenLevelsWorkAndFifteenFailTheWholeScan) {
  std::string deep;
  for (int level = 1; level <= 14; ++level)
    deep += "/d" + std::to_string(level);
  writeFile(dir.path() + deep + "/In.mbx", "x");
  writeFile(dir.path() + deep + "/In.toc", "x");
  touch("Top.mbx");
  touch("Top.toc");
  EXPECT_EQ(2u, mailboxes(".mbx", ".toc", 2).size());

  makeDirs(dir.path() + deep + "/d15");  // even empty, a fifteenth level fails everything
  CStringList all;
  all.AddTail("kept");
  EXPECT_EQ(kWalkTooDeep, FindFiles(all, (dir.path() + "/*.*").c_str()));
  EXPECT_EQ(1, all.GetCount());
  mailboxes(".mbx", ".toc", -1);
}

TEST_F(MailboxScanTest, AMissingOrUnreadableDirectoryFailsTheScan) {
  CMailFilenameList list;
  EXPECT_EQ(-1, list.findMailboxes((dir.path() + "/missing").c_str(), ".mbx", ".toc"));
  if (geteuid() != 0) {
    makeDirs(dir.file("locked"));
    chmod(dir.file("locked").c_str(), 0);
    mailboxes(".mbx", ".toc", -1);
  }
}

TEST_F(MailboxScanTest, PairingGoesByStemWithoutRegardToCase) {
  touch("IN.MBX");
  touch("in.toc");
  touch("Out.mbx");
  touch("Out.Toc");  // mixed case: no control file
  touch("Lone.mbx");
  touch("Orphan.toc");
  makeDirs(dir.file("work"));
  makeDirs(dir.file("home"));
  touch("work/In.mbx");
  touch("home/In.toc");
  // Each element names the mail file as it exists on disk.
  EXPECT_EQ(std::vector<std::string>{"~/IN.MBX"}, mailboxes(".MBX", ".TOC", 1));
}

TEST_F(MailboxScanTest, OrderIsTheControlFilesOrderAndEachMailFilePairsOnce) {
  touch("b.mbx");
  touch("a.mbx");
  touch("a.toc");
  touch("b.toc");
  touch("b.TOC");  // a second control file for the same stem adds nothing
  EXPECT_EQ((std::vector<std::string>{"~/a.mbx", "~/b.mbx"}), mailboxes(".mbx", ".toc", 2));
}

TEST_F(MailboxScanTest, EmptyMailExtensionTakesFilesWithoutOne) {
  touch("Inbox");
  touch("Inbox.snm");
  touch("Sent");
  touch("Drafts.snm");
  makeDirs(dir.file("Archive.sbd"));
  touch("Archive.sbd/1998");
  touch("Archive.sbd/1998.SNM");
  EXPECT_EQ((std::vector<std::string>{"~/Inbox", "~/Archive.sbd/1998"}),
            mailboxes("", ".SNM", 2));
}

TEST_F(MailboxScanTest, ControlExtensionIsFoundAnywhereInThePath) {
  touch("notes.toc.bak");
  touch("notes.toc.mbx");  // its own control file, and notes.toc.bak's stem is \notes.toc
  touch("old.toc.mbx");
  EXPECT_EQ((std::vector<std::string>{"~/notes.toc.mbx", "~/old.toc.mbx"}),
            mailboxes(".mbx", ".toc", 2));
}

TEST_F(MailboxScanTest, NoMailboxesIsAnEmptyListNotAFailure) {
  touch("a.toc");
  makeDirs(dir.file("x.mbx"));  // a directory with the mail extension is no mail file
  touch("x.toc");
  EXPECT_TRUE(mailboxes(".mbx", ".toc", 0).empty());
}

TEST_F(MailboxScanTest, CursorHandsOutCopiesAndRewinds) {
  touch("a.mbx");
  touch("a.toc");
  touch("b.mbx");
  touch("b.toc");
  CMailFilenameList list;
  ASSERT_EQ(2, list.findMailboxes(dir.path().c_str(), ".mbx", ".toc"));
  EXPECT_EQ(dir.file("a.mbx"), std::string(*list.getFirstMailbox()));
  EXPECT_EQ(dir.file("b.mbx"), std::string(*list.getNextMailbox()));
  EXPECT_EQ(nullptr, list.getNextMailbox());
  EXPECT_EQ(dir.file("a.mbx"), std::string(*list.getFirstMailbox()));
  CMailFilenameList empty;
  EXPECT_EQ(nullptr, empty.getFirstMailbox());
}

TEST_F(MailboxScanTest, SymbolicLinksAreNeverEntered) {
  makeDirs(dir.file("real"));
  touch("real/In.mbx");
  touch("real/In.toc");
  ASSERT_EQ(0, symlink(dir.path().c_str(), dir.file("real/loop").c_str()));
  EXPECT_EQ(std::vector<std::string>{"~/real/In.mbx"}, mailboxes(".mbx", ".toc", 1));
}

} // namespace
