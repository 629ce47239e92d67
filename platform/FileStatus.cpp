// A file's status by path: CFile::GetStatus and GetFileAttributesA, both following links.
#include "FileStatus.h"

#include "Files.h"
#include "FilesFaults.h"

#include <cerrno>
#include <sys/stat.h>

namespace {

int statPath(const char *path, struct stat &status) {
  return injectedFailure(FileOperation::StatPath) ? -1 : ::stat(path, &status);
}

DWORD attributesOf(const struct stat &status) {
  return S_ISDIR(status.st_mode) ? DWORD{FILE_ATTRIBUTE_DIRECTORY} : DWORD{FILE_ATTRIBUTE_NORMAL};
}

} // namespace

BOOL CFile::GetStatus(const char *path, CFileStatus &status) {
  struct stat found;
  if (path == nullptr || statPath(path, found) != 0)
    return FALSE;
  // Times are 32-bit throughout the agent: keep the low 32 bits and read them as signed, so
  // that a time past 2038 wraps as it does in every stored record.
  status.m_mtime = static_cast<int32_t>(static_cast<uint32_t>(found.st_mtime));
  status.m_size = static_cast<uint64_t>(found.st_size);
  status.m_attribute = attributesOf(found);
  return TRUE;
}

DWORD GetFileAttributesA(const char *name) {
  if (name == nullptr || *name == '\0') {
    SetLastError(ERROR_FILE_NOT_FOUND);
    return INVALID_FILE_ATTRIBUTES;
  }
  struct stat found;
  if (statPath(name, found) != 0) {
    SetLastError(errorFromErrno(errno));
    return INVALID_FILE_ATTRIBUTES;
  }
  return attributesOf(found);
}
