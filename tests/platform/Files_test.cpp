// Opening, mapping and looking up files: what the calls refuse, the errors they leave, and
// that nothing they open outlives its release.
#include "platform/FileStatus.h"
#include "platform/Files.h"
#include "platform/FilesFaults.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
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
  EXPECT_FALSE(isMappedInThisProcess(path));
  EXPECT_FALSE(UnmapViewOfFile(view));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
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
    ASSERT_TRUE(empty.valid()); // a file of zero bytes opens, but can't be mapped
    EXPECT_EQ(mappingOf(empty.get()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_INVALID);
  }
  EXPECT_EQ(openDescriptorCount(), descriptorsBefore);
  EXPECT_FALSE(isMappedInThisProcess(path));
}

TEST(FilesTest, StatusAndAttributesByPath) {
  TempDir dir;
  writeFile(dir.file("In.mbx"), "12345");
  makeDirs(dir.file("mail"));
  ASSERT_EQ(symlink("mail", dir.file("mail-link").c_str()), 0);
  ASSERT_EQ(symlink("gone", dir.file("dangling").c_str()), 0);
  EXPECT_EQ(GetFileAttributesA(dir.file("In.mbx").c_str()), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(GetFileAttributesA(dir.file("mail-link").c_str()), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetFileAttributesA(dir.file("dangling").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(GetFileAttributesA(""), INVALID_FILE_ATTRIBUTES);

  // A mailbox's stamp is 32 bits: times past 2038 keep their low 32 bits, as signed.
  CFileStatus status;
  for (const long seconds : {0x80000000L + 10, 0x100000005L}) {
    setFileTime(dir.file("In.mbx"), seconds);
    struct stat stored;
    if (stat(dir.file("In.mbx").c_str(), &stored) != 0 || stored.st_mtime != seconds)
      GTEST_SKIP() << "the file system does not keep a time of " << seconds;
    ASSERT_TRUE(CFile::GetStatus(dir.file("In.mbx").c_str(), status));
    EXPECT_EQ(status.m_mtime, static_cast<int32_t>(static_cast<uint32_t>(seconds)));
    EXPECT_EQ(status.m_size, 5u);
  }
  // A file that can't be stat'ed fails and leaves the status as it was.
  const CFileStatus before = status;
  EXPECT_FALSE(CFile::GetStatus(dir.file("missing").c_str(), status));
  EXPECT_EQ(status.m_mtime, before.m_mtime);
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
