// Directory listings: their order, the kinds of entries, patterns, and listings that fail.
#include "platform/DirList.h"
#include "platform/Files.h"
#include "platform/FilesFaults.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

typedef std::vector<std::pair<std::string, DWORD>> Listing;

// Everything the search for `pattern` delivers, in order; empty when the first call fails.
Listing listing(const std::string &pattern) {
  Listing entries;
  WIN32_FIND_DATAA found;
  ScopedHandle search(FindFirstFileA(pattern.c_str(), &found));
  if (!search.valid())
    return entries;
  do
    entries.emplace_back(found.cFileName, found.dwFileAttributes);
  while (FindNextFileA(search.get(), &found));
  EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
  return entries;
}

std::vector<std::string> namesOf(const Listing &entries) {
  std::vector<std::string> names;
  for (const auto &entry : entries)
    names.push_back(entry.first);
  return names;
}

// The error FindFirstFileA leaves for `pattern`, 0 when it succeeds.
DWORD firstFindError(const std::string &pattern) {
  WIN32_FIND_DATAA found;
  ScopedHandle search(FindFirstFileA(pattern.c_str(), &found));
  return search.valid() ? 0 : GetLastError();
}

// The same, asked by a process that lacks the privilege of reading every directory: as
// root, a child process that gives root up first.
DWORD firstFindErrorWithoutPrivilege(const std::string &pattern) {
  if (geteuid() != 0)
    return firstFindError(pattern);
  const int status = runInChild(
      [&] {
        const uid_t nobody = 65534;
        if (setgid(nobody) != 0 || setuid(nobody) != 0)
          return 255;
        const DWORD error = firstFindError(pattern);
        return error < 255 ? static_cast<int>(error) : 254;
      },
      0);
  return WIFEXITED(status) ? static_cast<DWORD>(WEXITSTATUS(status)) : 0xDEAD;
}

}  // namespace

TEST(DirListTest, DotsComeFirstThenNamesInByteOrderOfTheirUpperCase) {
  TempDir dir;
  // Created neither in order nor in reverse order, so that no listing order of the file
  // system can pass for the right one.
  for (const char *name : {"b", "Ab", "_x", "Z", "ab", "[", "\xC3\xA9", "AB", "aB", "a", "A"})
    writeFile(dir.file(name), "");
  // Upper-cased, '_' (0x5F) and '[' (0x5B) sort behind every letter; names equal when
  // upper-cased fall back to their raw bytes; bytes from 0x80 up are not letters.
  const std::vector<std::string> expected = {".",  "..", "A", "a", "AB", "Ab", "aB",
                                             "ab", "b",  "Z", "[", "_x", "\xC3\xA9"};
  EXPECT_EQ(namesOf(listing(dir.path() + "/*.*")), expected);
  EXPECT_EQ(namesOf(listing(dir.path() + "/*")), expected);
}

TEST(DirListTest, KindsComeFromTheEntryAndALinkIsNeverADirectory) {
  TempDir dir;
  writeFile(dir.file("In.mbx"), "");
  makeDirs(dir.file("Folder"));
  ASSERT_EQ(symlink("Folder", dir.file("link-to-folder").c_str()), 0);
  ASSERT_EQ(symlink("gone", dir.file("link-to-nothing").c_str()), 0);
  ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
  const Listing expected = {{".", FILE_ATTRIBUTE_DIRECTORY},
                            {"..", FILE_ATTRIBUTE_DIRECTORY},
                            {"Folder", FILE_ATTRIBUTE_DIRECTORY},
                            {"In.mbx", FILE_ATTRIBUTE_NORMAL},
                            {"link-to-folder", FILE_ATTRIBUTE_NORMAL},
                            {"link-to-nothing", FILE_ATTRIBUTE_NORMAL},
                            {"pipe", FILE_ATTRIBUTE_NORMAL}};
  EXPECT_EQ(listing(dir.path() + "/*.*"), expected);
}

TEST(DirListTest, AnyOtherPatternIsANameMatchedWithoutRegardToCase) {
  TempDir dir;
  writeFile(dir.file("readme.txt"), "");
  writeFile(dir.file("readme.txt.bak"), "");
  const Listing expected = {{"readme.txt", FILE_ATTRIBUTE_NORMAL}};
  EXPECT_EQ(listing(dir.path() + "/README.TXT"), expected);
  EXPECT_EQ(firstFindError(dir.path() + "/readme"), ERROR_FILE_NOT_FOUND);
}

TEST(DirListTest, ADirectoryThatCannotBeReadWholeFails) {
  TempDir dir;
  writeFile(dir.file("plain"), "");
  EXPECT_EQ(firstFindError(dir.file("missing/*.*")), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(firstFindError(dir.file("plain/*.*")), ERROR_PATH_NOT_FOUND);

  makeDirs(dir.file("locked"));
  ASSERT_EQ(chmod(dir.path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(dir.file("locked").c_str(), 0), 0);
  EXPECT_EQ(firstFindErrorWithoutPrivilege(dir.file("locked/*.*")), ERROR_ACCESS_DENIED);

  // A failed read is a failure, not the end of the listing.
  failNextFileOperations(FileOperation::ReadDirectory, EIO);
  EXPECT_EQ(firstFindError(dir.path() + "/*.*"), ERROR_GEN_FAILURE);
  failNextFileOperations(FileOperation::OpenDirectory, EMFILE);
  EXPECT_EQ(firstFindError(dir.path() + "/*.*"), ERROR_TOO_MANY_OPEN_FILES);
  clearFileOperationFailures();
  EXPECT_EQ(firstFindError(dir.path() + "/*.*"), 0u);
}
