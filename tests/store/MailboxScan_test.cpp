// The tree walk and the pairing of mail files with control files.
#include "store/MFNList.h"
#include "tests/support/AgentSession.h"
#include "tests/support/TestFiles.h"
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <tuple>
#include <vector>

namespace {
using Names = std::vector<std::string>;

// The list's elements, with the folder `root` written as "~".
Names elements(const CStringList &list, const std::string &root) {
  Names out;
  for (POSITION at = list.GetHeadPosition(); at;) {
    const std::string text = list.GetNext(at).GetString();
    out.push_back(text.compare(0, root.size(), root) == 0 ? "~" + text.substr(root.size()) : text);
  }
  return out;
}

// The words of `text`.
Names split(const std::string &text) {
  std::istringstream words(text);
  return Names(std::istream_iterator<std::string>(words), {});
}

class MailboxScanTest : public ::testing::Test {
protected:
  AgentSession session;
  TempDir dir;
};

// Level by level; inside a folder, names in the order of their upper-cased bytes.
TEST_F(MailboxScanTest, WalkListsLevelByLevel) {
  for (const char *file : {"x.mbx", "x.toc", "A/a.mbx", "B/b.toc"})
    writeFile(dir.file(file), "x");
  makeDirs(dir.file("A/S"));
  CStringList all;
  ASSERT_EQ(0, FindFiles(all, (dir.path() + "/*.*").c_str()));
  const Names expected = {"~/.",     "~/..",   "~/A/",      "~/B/",      "~/x.mbx",
                          "~/x.toc", "~/A/.",  "~/A/..",    "~/A/a.mbx", "~/A/S/",
                          "~/B/.",   "~/B/..", "~/B/b.toc", "~/A/S/.",   "~/A/S/.."};
  EXPECT_EQ(expected, elements(all, dir.path()));
}

TEST_F(MailboxScanTest, MailFilesPairWithAControlFileOfTheirStem) {
  // The two extensions, the store's files ("name/" is a folder), the mail files paired.
  const std::tuple<const char *, const char *, const char *, const char *> cases[] = {
      // By stem without regard to case, named as on disk.
      {".MBX", ".TOC", "IN.MBX in.toc Out.mbx Out.Toc Lone.mbx Orphan.toc work/In.mbx home/In.toc",
       "~/IN.MBX"},
      // In the control files' order, each mail file once.
      {".mbx", ".toc", "b.mbx a.mbx a.toc b.toc b.TOC", "~/a.mbx ~/b.mbx"},
      // An empty mail extension takes files without one.
      {"", ".SNM", "Inbox Inbox.snm Sent Drafts.snm Archive.sbd/1998 Archive.sbd/1998.SNM",
       "~/Inbox ~/Archive.sbd/1998"},
      // The control extension is found anywhere in the name.
      {".mbx", ".toc", "notes.toc.bak notes.toc.mbx old.toc.mbx", "~/notes.toc.mbx ~/old.toc.mbx"},
      // A folder with the mail extension is no mail file; nor one without an extension, not
      // even by the "." entry a ".snm" in it would pair.
      {".mbx", ".toc", "a.toc x.mbx/ x.toc", ""},
      {"", ".SNM", "Inbox Inbox.snm Box/.snm Box.snm", "~/Inbox"},
  };
  for (const auto &[mailExt, ctrlExt, files, paired] : cases) {
    SCOPED_TRACE(files);
    TempDir store;
    for (const std::string &file : split(files))
      if (file.back() == '/')
        makeDirs(store.file(file));
      else
        writeFile(store.file(file), "x");
    CMailFilenameList list;
    const Names expected = split(paired);
    EXPECT_EQ(static_cast<int>(expected.size()),
              list.findMailboxes(store.path().c_str(), mailExt, ctrlExt));
    EXPECT_EQ(expected, elements(list, store.path()));
  }
}
} // namespace
