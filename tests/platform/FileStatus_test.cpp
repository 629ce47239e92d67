// A file's status and attributes by path.
#include "platform/FileStatus.h"
#include "platform/Files.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sys/stat.h>
#include <unistd.h>

TEST(FileStatusTest, GivesTimeSizeAndKindOrFailsUntouched) {
  TempDir dir;
  writeFile(dir.file("In.mbx"), "12345");
  setFileTime(dir.file("In.mbx"), 1700000000);
  CFileStatus status;
  ASSERT_TRUE(CFile::GetStatus(dir.file("In.mbx").c_str(), status));
  EXPECT_EQ(status.m_mtime, 1700000000);
  EXPECT_EQ(status.m_size, 5u);
  EXPECT_EQ(status.m_attribute, FILE_ATTRIBUTE_NORMAL);
  ASSERT_TRUE(CFile::GetStatus(dir.path().c_str(), status));
  EXPECT_EQ(status.m_attribute, FILE_ATTRIBUTE_DIRECTORY);

  // A file that can't be stat'ed fails and leaves the status as it was.
  const CFileStatus before = status;
  EXPECT_FALSE(CFile::GetStatus(dir.file("missing").c_str(), status));
  EXPECT_EQ(status.m_mtime, before.m_mtime);
  EXPECT_EQ(status.m_attribute, before.m_attribute);
}

TEST(FileStatusTest, TimesPast2038KeepTheirLow32BitsAsSigned) {
  TempDir dir;
  const std::string path = dir.file("In.mbx");
  writeFile(path, "x");
  const struct {
    long seconds;
    int32_t expected;
  } cases[] = {{0x80000000L + 10, INT32_MIN + 10}, {0x100000005L, 5}};
  for (const auto &time : cases) {
    setFileTime(path, time.seconds);
    struct stat stored;
    if (stat(path.c_str(), &stored) != 0 || stored.st_mtime != time.seconds)
      GTEST_SKIP() << "the file system does not keep a time of " << time.seconds;
    CFileStatus status;
    ASSERT_TRUE(CFile::GetStatus(path.c_str(), status));
    EXPECT_EQ(status.m_mtime, time.expected) << time.seconds;
  }
}

TEST(FileAttributesTest, DirectoryOrNormalThroughLinksAndInvalidWhenMissing) {
  TempDir dir;
  writeFile(dir.file("settings.ini"), "");
  makeDirs(dir.file("mail"));
  ASSERT_EQ(symlink("mail", dir.file("mail-link").c_str()), 0);
  ASSERT_EQ(symlink("gone", dir.file("dangling").c_str()), 0);
  EXPECT_EQ(GetFileAttributesA(dir.file("settings.ini").c_str()), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(GetFileAttributesA(dir.file("mail").c_str()), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetFileAttributesA(dir.file("mail-link").c_str()), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetFileAttributesA(dir.file("dangling").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetFileAttributesA(dir.file("missing").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(GetFileAttributesA(""), INVALID_FILE_ATTRIBUTES);
}
