// Mapping files and their status: a refused view leaves nothing open, a file cut short before
// it is mapped faults inside the guard, what tells one file from another under one name, and
// a time past 2038. (Which files open at all: the agent's walks in hostile/StoreShapes.)
#include "platform/FaultGuard.h"
#include "platform/FileStatus.h"
#include "platform/Files.h"
#include "platform/FilesFaults.h"
#include "tests/support/TestFiles.h"
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
HANDLE openForReading(const std::string &path) {
  return CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE mappingOf(HANDLE file) {
  return CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
}

void *viewOf(HANDLE mapping) {
  return MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
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
} // namespace

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
    ScopedView view(viewOf(mapping.get())); // the failure was for one call only
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

// A mailbox cut short between the size the mail file asks for and the mapping it makes: the
// bytes below the size it was told stay inside the view, and a read past the new end fails
// inside the guard instead of reading whatever memory lies behind a shorter view. In a child:
// a read outside every mapping would kill the test program.
TEST(FilesTest, AFileCutShortBeforeItIsMappedFaultsInsideTheGuard) {
  TempDir dir;
  const std::string path = dir.file("In.mbx");
  constexpr size_t kPage = 4096;
  writeFile(path, std::string(16 * kPage, 'x'));
  const int status = runInChild(
      [&] {
        ScopedHandle file(openForReading(path));
        const DWORD told = GetFileSize(file.get(), nullptr);
        if (told != 16 * kPage || truncate(path.c_str(), kPage) != 0)
          return 2;
        ScopedHandle mapping(mappingOf(file.get()));
        ScopedView view(viewOf(mapping.get()));
        if (view.get() == nullptr)
          return 3;
        volatile unsigned char byte = 0;
        const bool read = runGuarded([&] { byte = view.get()[told - 1]; });
        (void)byte;
        return read ? 1 : 0; // 1: it read something; a signal: the read left the view
      },
      0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << describeStatus(status);
}

// What tells one file from another under the same name, as a kept mailbox's mapping asks.
TEST(FilesTest, InformationNamesTheFileItsSizeAndWriteTime) {
  const TempDir dir;
  const std::string path = dir.file("box");
  const auto informationOf = [&] {
    const ScopedHandle file(openForReading(path));
    BY_HANDLE_FILE_INFORMATION information{};
    EXPECT_TRUE(GetFileInformationByHandle(file.get(), &information));
    return information;
  };
  const auto sameFile = [](const BY_HANDLE_FILE_INFORMATION &a,
                           const BY_HANDLE_FILE_INFORMATION &b) {
    return a.dwVolumeSerialNumber == b.dwVolumeSerialNumber &&
           a.nFileIndexHigh == b.nFileIndexHigh && a.nFileIndexLow == b.nFileIndexLow;
  };
  writeFile(path, "12345");
  setFileTime(path, 1000000000);
  const BY_HANDLE_FILE_INFORMATION first = informationOf();
  EXPECT_EQ(0u, first.nFileSizeHigh);
  EXPECT_EQ(5u, first.nFileSizeLow);
  EXPECT_EQ(1u, first.nNumberOfLinks);
  // 1 000 000 000 s after 1970, in 100 ns steps after 1601.
  const uint64_t written =
      (uint64_t{first.ftLastWriteTime.dwHighDateTime} << 32) | first.ftLastWriteTime.dwLowDateTime;
  EXPECT_EQ(116444736000000000ull + 10000000000000000ull, written);
  appendFile(path, "678");
  const BY_HANDLE_FILE_INFORMATION grown = informationOf();
  EXPECT_TRUE(sameFile(first, grown));
  EXPECT_EQ(8u, grown.nFileSizeLow);
  writeFile(dir.file("new"), "12345");
  ASSERT_EQ(0, std::rename(dir.file("new").c_str(), path.c_str()));
  EXPECT_FALSE(sameFile(first, informationOf()));
  // What is no file handle is refused.
  BY_HANDLE_FILE_INFORMATION information;
  EXPECT_FALSE(GetFileInformationByHandle(INVALID_HANDLE_VALUE, &information));
  EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
  EXPECT_FALSE(GetFileInformationByHandle(nullptr, &information));
}

// A mailbox's stamp is 32 bits: times past 2038 keep their low 32 bits, as signed.
TEST(FilesTest, StatusGivesTheLow32BitsOfTheTime) {
  TempDir dir;
  writeFile(dir.file("In.mbx"), "12345");
  CFileStatus status;
  for (const int64_t seconds : {int64_t{0x80000000} + 10, int64_t{0x100000005}}) {
    setFileTime(dir.file("In.mbx"), seconds);
    struct stat stored;
    ASSERT_EQ(stat(dir.file("In.mbx").c_str(), &stored), 0) << std::strerror(errno);
    if (stored.st_mtime != seconds)
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
