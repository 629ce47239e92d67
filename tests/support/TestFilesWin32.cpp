// Files and folders for tests, on Windows.
#include "tests/support/TestFiles.h"

#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <windows.h>

TempDir::TempDir() {
  char base[MAX_PATH];
  const DWORD length = GetTempPathA(sizeof base, base);
  // The tick count and the process make the name unique enough; CreateDirectory says if not.
  for (unsigned attempt = 0; length > 0 && length < sizeof base && attempt < 100; ++attempt) {
    const std::string path = std::string(base) + "tuk-test-" +
                             std::to_string(GetCurrentProcessId()) + "-" +
                             std::to_string(GetTickCount64() + attempt);
    if (CreateDirectoryA(path.c_str(), nullptr)) {
      path_ = path;
      return;
    }
  }
  ADD_FAILURE() << "cannot make a temporary folder";
}

bool fileExists(const std::string &path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void setFileTime(const std::string &path, int64_t seconds) {
  const HANDLE file = CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  const uint64_t steps = (static_cast<uint64_t>(seconds) + 11644473600ULL) * 10000000ULL;
  const FILETIME when{static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
  if (file == INVALID_HANDLE_VALUE || !SetFileTime(file, nullptr, &when, &when))
    ADD_FAILURE() << "cannot set the time of " << path;
  if (file != INVALID_HANDLE_VALUE)
    CloseHandle(file);
}

namespace {

void CALLBACK outlived(void *, BOOLEAN) {
  std::fprintf(stderr, "watchdog: the test did not end in time\n");
  std::fflush(stderr);
  TerminateProcess(GetCurrentProcess(), 3);
}

} // namespace

Watchdog::Watchdog(unsigned seconds) {
  HANDLE timer = nullptr;
  if (CreateTimerQueueTimer(&timer, nullptr, outlived, nullptr, seconds * 1000, 0,
                            WT_EXECUTEONLYONCE))
    timer_ = timer;
}

Watchdog::~Watchdog() {
  // Waits for a callback under way, so that none runs after the scope.
  if (timer_ != nullptr)
    DeleteTimerQueueTimer(nullptr, timer_, INVALID_HANDLE_VALUE);
}

namespace {

// Each test program starts with no values of the agents under the real registry, as a POSIX
// one starts with a registry file of its own: values a test stored never reach the next.
const bool registryCleared = [] {
  RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\Tuk");
  return true;
}();

} // namespace
