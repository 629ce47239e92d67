// SHGetFileInfoA for icon indices: a process-wide image list in which every regular file
// gets an index of its own the first time it is asked for.
#include "Shell.h"

#include "FilesFaults.h"

#include <climits>
#include <cstdlib>
#include <map>
#include <string>
#include <sys/stat.h>

namespace {

// The handles of the two image lists; only their being non-zero matters.
constexpr DWORD_PTR kLargeImageList = 0x1C0;
constexpr DWORD_PTR kSmallImageList = 0x1C1;

// The index of each file by its resolved path. Never destroyed: no order of teardown to mind.
std::map<std::string, int> &imageList() {
  static auto *const indices = new std::map<std::string, int>;
  return *indices;
}

thread_local int largeFailures = 0;
thread_local int smallFailures = 0;

std::string resolvedPath(const char *path) {
  char resolved[PATH_MAX];
  return realpath(path, resolved) != nullptr ? std::string(resolved) : std::string(path);
}

} // namespace

DWORD_PTR SHGetFileInfoA(const char *path, DWORD, SHFILEINFOA *info, UINT infoSize, UINT flags) {
  if (path == nullptr || info == nullptr || infoSize < sizeof(SHFILEINFOA) ||
      !(flags & SHGFI_SYSICONINDEX) || (flags & ~(SHGFI_SYSICONINDEX | SHGFI_SMALLICON)))
    return 0;
  const bool smallIcons = (flags & SHGFI_SMALLICON) != 0;
  int &failures = smallIcons ? smallFailures : largeFailures;
  if (failures > 0) {
    --failures;
    return 0;
  }
  struct stat status;
  if (injectedFailure(FileOperation::StatPath) || stat(path, &status) != 0 ||
      !S_ISREG(status.st_mode))
    return 0;
  std::map<std::string, int> &indices = imageList();
  const int next = static_cast<int>(indices.size()) + 1;
  info->iIcon = indices.emplace(resolvedPath(path), next).first->second;
  return smallIcons ? kSmallImageList : kLargeImageList;
}

void failIconLookups(bool smallIcons, int count) {
  (smallIcons ? smallFailures : largeFailures) = count;
}
