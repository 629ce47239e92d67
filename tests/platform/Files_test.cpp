// Mapping files and their status: a refused view leaves nothing open, and a time past 2038.
// (Which files open at all: the agent's walks in hostile/StoreShapes.)
#include "platform/FileStatus.h"
#include "platform/Files.h"
#include "platform/FilesFaults.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
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

// A mailbox's stamp is 32 bits: times past 2038 keep their low 32 bits, as signed.
TEST(FilesTest, StatusGivesTheLow32BitsOfTheTime) {
  TempDir dir;
  writeFile(dir.file("In.mbx"), "12345");
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
