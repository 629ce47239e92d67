// Directory listings: their order, the kinds of entries, patterns, and listings that fail.
#include "platform/DirList.h"
#include "platform/Files.h"
#include "platform/FilesFaults.h"
#include "tests/support/TestFiles.h"
#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>
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
} // namespace

TEST(DirListTest, DotsComeFirstThenNamesInByteOrderOfTheirUpperCase) {
  TempDir dir;
  // Created neither in order nor in reverse order, so that no listing order of the file
  // system can pass for the right one.
  for (const char *name : {"b", "Ab", "_x", "Z", "ab", "[", "\xC3\xA9", "AB", "aB", "a", "A"})
    writeFile(dir.file(name), "");
  // Upper-cased, '_' (0x5F) and '[' (0x5B) sort behind every letter; names equal when
  // upper-cased fall back to their raw bytes; bytes from 0x80 up are not letters.
  const std::vector<std::string> expected = {".",  "..", "A", "a", "AB", "Ab",      "aB",
                                             "ab", "b",  "Z", "[", "_x", "\xC3\xA9"};
  EXPECT_EQ(namesOf(listing(dir.path() + "/*.*")), expected);
}

TEST(DirListTest, KindsComeFromTheEntryAndALinkIsNeverADirectoryThere) {
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
  // By path, a link is what it leads to; only the listing, which the walk uses, never follows.
  EXPECT_EQ(GetFileAttributesA(dir.file("link-to-folder").c_str()), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetFileAttributesA(dir.file("In.mbx").c_str()), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(GetFileAttributesA(dir.file("link-to-nothing").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(GetFileAttributesA(""), INVALID_FILE_ATTRIBUTES);
}

// A read that fails midway fails the listing instead of ending it: a walk must never give a
// store with folders left out. (Folders that can't be opened: hostile/StoreShapes.)
TEST(DirListTest, AReadThatFailsFailsTheListing) {
  TempDir dir;
  writeFile(dir.file("plain"), "");
  EXPECT_EQ(firstFindError(dir.file("plain/*.*")), ERROR_PATH_NOT_FOUND);
  failNextFileOperations(FileOperation::ReadDirectory, EIO);
  EXPECT_EQ(firstFindError(dir.path() + "/*.*"), ERROR_GEN_FAILURE);
  clearFileOperationFailures();
  EXPECT_EQ(firstFindError(dir.path() + "/*.*"), 0u);
}
