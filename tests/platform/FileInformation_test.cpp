// GetFileInformationByHandle: what tells one file from another under the same name.
#include "platform/Files.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sys/stat.h>

namespace {

HANDLE openForReading(const std::string &path) {
  return CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

BY_HANDLE_FILE_INFORMATION informationOf(const std::string &path) {
  const ScopedHandle file(openForReading(path));
  BY_HANDLE_FILE_INFORMATION information{};
  EXPECT_TRUE(GetFileInformationByHandle(file.get(), &information));
  return information;
}

bool sameFile(const BY_HANDLE_FILE_INFORMATION &a, const BY_HANDLE_FILE_INFORMATION &b) {
  return a.dwVolumeSerialNumber == b.dwVolumeSerialNumber &&
         a.nFileIndexHigh == b.nFileIndexHigh && a.nFileIndexLow == b.nFileIndexLow;
}

TEST(FileInformation, NamesTheFileItsSizeAndWriteTime) {
  const TempDir dir;
  const std::string path = dir.file("box");
  writeFile(path, "12345");
  setFileTime(path, 1000000000);
  const BY_HANDLE_FILE_INFORMATION first = informationOf(path);
  EXPECT_EQ(0u, first.nFileSizeHigh);
  EXPECT_EQ(5u, first.nFileSizeLow);
  EXPECT_EQ(1u, first.nNumberOfLinks);
  // 1 000 000 000 s after 1970, in 100 ns steps after 1601.
  const uint64_t written =
      (uint64_t{first.ftLastWriteTime.dwHighDateTime} << 32) | first.ftLastWriteTime.dwLowDateTime;
  EXPECT_EQ(116444736000000000ull + 10000000000000000ull, written);

  appendFile(path, "678");
  const BY_HANDLE_FILE_INFORMATION grown = informationOf(path);
  EXPECT_TRUE(sameFile(first, grown));
  EXPECT_EQ(8u, grown.nFileSizeLow);

  writeFile(dir.file("new"), "12345");
  ASSERT_EQ(0, std::rename(dir.file("new").c_str(), path.c_str()));
  EXPECT_FALSE(sameFile(first, informationOf(path)));
}

TEST(FileInformation, RefusesWhatIsNoFileHandle) {
  BY_HANDLE_FILE_INFORMATION information;
  EXPECT_FALSE(GetFileInformationByHandle(INVALID_HANDLE_VALUE, &information));
  EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
  EXPECT_FALSE(GetFileInformationByHandle(nullptr, &information));
}

} // namespace
