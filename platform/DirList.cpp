// Directory listings in the order NTFS delivers them, read whole by FindFirstFileA.
//
// The mail walk depends on two things here: the order (it decides the order of the mailbox
// list, and so of every enumeration), and that a symbolic link is never a directory (so the
// walk can't loop through a link or leave the mail tree).
#include "DirList.h"

#include "CString.h"
#include "Files.h"
#include "FilesFaults.h"
#include "FilesHandles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <new>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <utility>
#include <vector>

namespace {

struct ListedEntry {
  std::string name;
  std::string sortKey; // the name upper-cased in ASCII
  DWORD attributes;
};

class SearchObject final : public HandleObject {
public:
  explicit SearchObject(std::vector<ListedEntry> entries) : entries(std::move(entries)) {}
  const std::vector<ListedEntry> entries;
  size_t next = 0; // the entry that FindNextFileA delivers
};

struct DirectoryCloser {
  void operator()(DIR *directory) const { ::closedir(directory); }
};
using DirectoryStream = std::unique_ptr<DIR, DirectoryCloser>;

struct SplitPattern {
  std::string directory;
  std::string pattern;
};

SplitPattern splitAtLastSlash(const std::string &whole) {
  const size_t slash = whole.rfind('/');
  if (slash == std::string::npos)
    return {".", whole};
  if (slash == 0)
    return {"/", whole.substr(1)};
  return {whole.substr(0, slash), whole.substr(slash + 1)};
}

bool matches(const std::string &name, const std::string &pattern) {
  if (pattern == "*.*" || pattern == "*")
    return true;
  return name.size() == pattern.size() &&
         asciiCompareNoCase(name.c_str(), pattern.c_str(), name.size()) == 0;
}

DWORD attributesOf(bool directory) {
  return directory ? DWORD{FILE_ATTRIBUTE_DIRECTORY} : DWORD{FILE_ATTRIBUTE_NORMAL};
}

std::string upperCased(const std::string &name) {
  std::string key(name);
  for (char &ch : key)
    ch = asciiToUpper(ch);
  return key;
}

// Attributes from the entry itself, not from what a link points to. False when the entry
// has vanished since it was listed.
bool entryAttributes(int directoryFd, const dirent &entry, DWORD &attributes) {
  struct stat status;
  if (::fstatat(directoryFd, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
    attributes = attributesOf(S_ISDIR(status.st_mode));
    return true;
  }
  if (errno == ENOENT)
    return false;
  // A directory that may be read but not searched: the type that the listing recorded is
  // all there is, as on Windows, where the listing alone carries the attributes.
  attributes = attributesOf(entry.d_type == DT_DIR);
  return true;
}

// The entries of `directory` whose names match `pattern`, unsorted. Returns 0, or the errno
// of the failure: a listing is complete or it is none.
int readMatchingEntries(const std::string &directory, const std::string &pattern,
                        std::vector<ListedEntry> &entries) {
  DirectoryStream stream(
      injectedFailure(FileOperation::OpenDirectory) ? nullptr : ::opendir(directory.c_str()));
  if (!stream)
    return errno;
  const int directoryFd = ::dirfd(stream.get());
  for (;;) {
    errno = 0;
    const dirent *entry =
        injectedFailure(FileOperation::ReadDirectory) ? nullptr : ::readdir(stream.get());
    if (entry == nullptr)
      return errno;
    if (!matches(entry->d_name, pattern))
      continue;
    DWORD attributes = 0;
    if (entryAttributes(directoryFd, *entry, attributes))
      entries.push_back(ListedEntry{entry->d_name, upperCased(entry->d_name), attributes});
  }
}

int dotsRank(const std::string &name) {
  if (name == ".")
    return 0;
  if (name == "..")
    return 1;
  return 2;
}

bool listedBefore(const ListedEntry &left, const ListedEntry &right) {
  // std::string compares its bytes as unsigned char: plain byte order.
  const int leftRank = dotsRank(left.name);
  const int rightRank = dotsRank(right.name);
  return std::tie(leftRank, left.sortKey, left.name) <
         std::tie(rightRank, right.sortKey, right.name);
}

void deliver(const ListedEntry &entry, WIN32_FIND_DATAA *found) {
  found->dwFileAttributes = entry.attributes;
  const size_t length = std::min(entry.name.size(), sizeof found->cFileName - 1);
  std::memcpy(found->cFileName, entry.name.data(), length);
  found->cFileName[length] = '\0';
}

} // namespace

HANDLE FindFirstFileA(const char *pattern, WIN32_FIND_DATAA *found) {
  if (pattern == nullptr || found == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  const SplitPattern split = splitAtLastSlash(pattern);
  std::vector<ListedEntry> entries;
  if (const int error = readMatchingEntries(split.directory, split.pattern, entries)) {
    // As on Windows, a directory that isn't there is a path not found, not a file.
    SetLastError(error == ENOENT ? ERROR_PATH_NOT_FOUND : errorFromErrno(error));
    return INVALID_HANDLE_VALUE;
  }
  if (entries.empty()) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  }
  std::sort(entries.begin(), entries.end(), listedBefore);
  auto *search = new (std::nothrow) SearchObject(std::move(entries));
  if (search == nullptr) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
  }
  deliver(search->entries[search->next++], found);
  return toHandle(search);
}

BOOL FindNextFileA(HANDLE handle, WIN32_FIND_DATAA *found) {
  SearchObject *search = handleAs<SearchObject>(handle);
  if (search == nullptr) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  if (found == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  if (search->next >= search->entries.size()) {
    SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
  }
  deliver(search->entries[search->next++], found);
  return TRUE;
}

BOOL FindClose(HANDLE handle) {
  if (handleAs<SearchObject>(handle) == nullptr) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  return CloseHandle(handle);
}
