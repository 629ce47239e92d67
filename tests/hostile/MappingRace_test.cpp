// A mailbox cut short between the size the mail file asks for and the mapping it makes: the
// bytes below the size it was told stay inside the view, and a read past the new end fails
// inside the guard instead of reading whatever memory lies behind a shorter view.
#include "platform/FaultGuard.h"
#include "platform/Files.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr size_t kPage = 4096;

// 0: the read past the new end failed in the guard. 1: it read something. A signal: the
// read left the view.
int readPastTheNewEnd(const std::string &path) {
  ScopedHandle file(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  const DWORD told = GetFileSize(file.get(), nullptr);
  if (told != 16 * kPage || truncate(path.c_str(), kPage) != 0)
    return 2;
  ScopedHandle mapping(CreateFileMappingA(file.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
  ScopedView view(MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0));
  if (view.get() == nullptr)
    return 3;
  volatile unsigned char byte = 0;
  const bool read = runGuarded([&] { byte = view.get()[told - 1]; });
  (void)byte;
  return read ? 1 : 0;
}

} // namespace

TEST(MappingRace, AFileCutShortBeforeItIsMappedFaultsInsideTheGuard) {
  TempDir dir;
  const std::string path = dir.file("In.mbx");
  writeFile(path, std::string(16 * kPage, 'x'));
  // In a child: a read outside every mapping would kill the test program.
  const int status = runInChild([&] { return readPastTheNewEnd(path); }, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << describeStatus(status);
}
