// The tree walk and the pairing of mail files with control files.
#include "store/MFNList.h"
#include "tests/support/AgentSession.h"
#include "tests/support/TestFiles.h"
#include <gtest/gtest.h>
#include <tuple>
#include <vector>

namespace {
using Names = std::vector<std::string>;

// The list's elements, with the folder `root` written as "~".
Names elements(const CStringList &list, const std::string &root) {
  Names out;
  for (POSITION at = list.GetHeadPosition(); at;) {
    const std::string text = list.GetNext(at).GetString();
    out.push_back(text.compare(0, root.size(), root) == 0 ? "~" + text.substr(root.size())
                                                          : text);
  }
  return out;
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
  const Names expected = {"~/.",   "~/..",   "~/A/",      "~/B/",    "~/x.mbx",
                          "~/x.toc", "~/A/.",  "~/A/..",    "~/A/a.mbx", "~/A/S/",
                          "~/B/.", "~/B/..", "~/B/b.toc", "~/A/S/.", "~/A/S/.."};
  EXPECT_EQ(expected, elements(all, dir.path()));
}

TEST_F(MailboxScanTest, MailFilesPairWithAControlFileOfTheirStem) {
  // Why; the store's files ("name/" is a folder); the two extensions; the mail files paired.
  const std::tuple<const char *, Names, const char *, const char *, Names> cases[] = {
      {"by stem without regard to case, named as on disk",
       {"IN.MBX", "in.toc", "Out.mbx", "Out.Toc", "Lone.mbx", "Orphan.toc", "work/In.mbx",
        "home/In.toc"},
       ".MBX",
       ".TOC",
       {"~/IN.MBX"}},
      {"in the control files' order, each mail file once",
       {"b.mbx", "a.mbx", "a.toc", "b.toc", "b.TOC"},
       ".mbx",
       ".toc",
       {"~/a.mbx", "~/b.mbx"}},
      {"an empty mail extension takes files without one",
       {"Inbox", "Inbox.snm", "Sent", "Drafts.snm", "Archive.sbd/1998", "Archive.sbd/1998.SNM"},
       "",
       ".SNM",
       {"~/Inbox", "~/Archive.sbd/1998"}},
      {"the control extension is found anywhere in the name",
       {"notes.toc.bak", "notes.toc.mbx", "old.toc.mbx"},
       ".mbx",
       ".toc",
       {"~/notes.toc.mbx", "~/old.toc.mbx"}},
      {"a folder with the mail extension is no mail file",
       {"a.toc", "x.mbx/", "x.toc"},
       ".mbx",
       ".toc",
       {}},
      {"nor one without an extension, not even by the \".\" entry a \".snm\" in it would pair",
       {"Inbox", "Inbox.snm", "Box/.snm", "Box.snm"},
       "",
       ".SNM",
       {"~/Inbox"}},
  };
  for (const auto &[why, files, mailExt, ctrlExt, expected] : cases) {
    SCOPED_TRACE(why);
    TempDir store;
    for (const std::string &file : files)
      if (file.back() == '/')
        makeDirs(store.file(file));
      else
        writeFile(store.file(file), "x");
    CMailFilenameList list;
    EXPECT_EQ(static_cast<int>(expected.size()),
              list.findMailboxes(store.path().c_str(), mailExt, ctrlExt));
    EXPECT_EQ(expected, elements(list, store.path()));
  }
}
} // namespace
