// Opening, sizing and mapping files: what the calls refuse, the errors they leave, and that
// nothing they open outlives its release.
#include "platform/Files.h"
#include "platform/FilesFaults.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

HANDLE openForReading(const std::string &path) {
  return CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE mappingOf(HANDLE file) {
  return CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
}

void *viewOf(HANDLE mapping) { return MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0); }

// Bytes that differ from page to page, so that a view at a wrong offset shows.
std::string distinctBytes(size_t size) {
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<char>((i * 7) ^ (i >> 12));
  return bytes;
}

int openDescriptorCount() {
  int count = 0;
  if (DIR *fds = opendir("/proc/self/fd")) {
    while (readdir(fds) != nullptr)
      ++count;
    closedir(fds);
  }
  return count;
}

bool mappedInThisProcess(const std::string &path) {
  std::ifstream maps("/proc/self/maps");
  std::string line;
  while (std::getline(maps, line))
    if (line.find(path) != std::string::npos)
      return true;
  return false;
}

// The error that opening `path` leaves; 0 when it opened.
DWORD openError(const std::string &path) {
  ScopedHandle file(openForReading(path));
  return file.valid() ? 0 : GetLastError();
}

}  // namespace

TEST(FilesTest, AViewHoldsTheFileBytesAndOutlivesItsHandles) {
  TempDir dir;
  const std::string path = dir.file("In.mbx");
  const std::string bytes = distinctBytes(3 * 4096 + 123);
  writeFile(path, bytes);

  HANDLE file = openForReading(path);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  DWORD high = 0xDEAD;
  EXPECT_EQ(GetFileSize(file, &high), bytes.size());
  EXPECT_EQ(high, 0u);
  HANDLE mapping = mappingOf(file);
  ASSERT_NE(mapping, nullptr);
  // As on Windows, a mapping stands without its file handle, and a view without both.
  EXPECT_TRUE(CloseHandle(file));
  void *view = viewOf(mapping);
  ASSERT_NE(view, nullptr);
  EXPECT_TRUE(CloseHandle(mapping));
  EXPECT_EQ(std::memcmp(view, bytes.data(), bytes.size()), 0);

  EXPECT_TRUE(UnmapViewOfFile(view));
  EXPECT_FALSE(mappedInThisProcess(path));
  EXPECT_FALSE(UnmapViewOfFile(view));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(FilesTest, AZeroByteFileOpensButRefusesToMap) {
  TempDir dir;
  writeFile(dir.file("empty.mbx"), "");
  ScopedHandle file(openForReading(dir.file("empty.mbx")));
  ASSERT_TRUE(file.valid());
  EXPECT_EQ(mappingOf(file.get()), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_FILE_INVALID);
}

TEST(FilesTest, OnlyAnExistingRegularFileOpens) {
  TempDir dir;
  writeFile(dir.file("plain"), "x");
  ASSERT_EQ(symlink("plain", dir.file("link").c_str()), 0);
  ASSERT_EQ(mkfifo(dir.file("fifo").c_str(), 0600), 0);

  EXPECT_EQ(openError(dir.file("link")), 0u);
  EXPECT_EQ(openError(dir.path()), ERROR_ACCESS_DENIED);
  EXPECT_EQ(openError("/dev/null"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(openError(dir.file("missing")), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(openError(dir.file("plain/below")), ERROR_PATH_NOT_FOUND);
  // A FIFO without a writer would block a plain open forever: the alarm ends a hang.
  alarm(10);
  EXPECT_EQ(openError(dir.file("fifo")), ERROR_ACCESS_DENIED);
  alarm(0);
}

TEST(FilesTest, GetFileSizeGivesTheHighPartOfAFileOver4GiB) {
  TempDir dir;
  const std::string path = dir.file("big.mbx");
  writeFile(path, "");
  const off_t size = (off_t{5} << 30) + 7;  // 0x1'4000'0007, sparse
  if (truncate(path.c_str(), size) != 0)
    GTEST_SKIP() << "the file system refuses a sparse file of 5 GiB: " << std::strerror(errno);
  ScopedHandle file(openForReading(path));
  ASSERT_TRUE(file.valid());
  DWORD high = 0;
  EXPECT_EQ(GetFileSize(file.get(), &high), 0x40000007u);
  EXPECT_EQ(high, 1u);
  EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
}

TEST(FilesTest, AViewTheSystemRefusesReportsWhyAndLeavesNothingOpen) {
  TempDir dir;
  const std::string path = dir.file("In.mbx");
  writeFile(path, "From x\n\nbody\n");
  writeFile(dir.file("empty"), "");
  const int descriptorsBefore = openDescriptorCount();
  {
    ScopedHandle file(openForReading(path));
    ScopedHandle mapping(mappingOf(file.get()));
    failNextFileOperations(FileOperation::MapView, ENOMEM);
    EXPECT_EQ(viewOf(mapping.get()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    ScopedView view(viewOf(mapping.get()));  // the failure was for one call only
    EXPECT_NE(view.get(), nullptr);

    // The refusals close what they opened on the way.
    EXPECT_NE(openError(dir.path()), 0u);
    ScopedHandle empty(openForReading(dir.file("empty")));
    EXPECT_EQ(mappingOf(empty.get()), nullptr);
  }
  EXPECT_EQ(openDescriptorCount(), descriptorsBefore);
  EXPECT_FALSE(mappedInThisProcess(path));
}

TEST(FilesTest, LastErrorBelongsToTheThread) {
  SetLastError(ERROR_FILE_INVALID);
  DWORD seenByOther = 0xDEAD;
  std::thread other([&] {
    seenByOther = GetLastError();
    SetLastError(ERROR_ACCESS_DENIED);
  });
  other.join();
  EXPECT_EQ(seenByOther, ERROR_SUCCESS);
  EXPECT_EQ(GetLastError(), ERROR_FILE_INVALID);
}
