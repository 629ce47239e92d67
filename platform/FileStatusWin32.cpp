// CFile::GetStatus on Windows: the file's attributes, size and last-write time by path.
#include "FileStatus.h"

namespace {

// 100 ns steps from 1601 to 1970.
constexpr int64_t kEpochDifference = 116444736000000000LL;

} // namespace

BOOL CFile::GetStatus(const char *path, CFileStatus &status) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (path == nullptr || !GetFileAttributesExA(path, GetFileExInfoStandard, &data))
    return FALSE;
  const int64_t written = (static_cast<int64_t>(data.ftLastWriteTime.dwHighDateTime) << 32) |
                          data.ftLastWriteTime.dwLowDateTime;
  // Times are 32-bit throughout the agent: the low 32 bits of the seconds, read as signed.
  const int64_t seconds = (written - kEpochDifference) / 10000000;
  status.m_mtime = static_cast<int32_t>(static_cast<uint32_t>(seconds));
  status.m_size = (static_cast<uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
  status.m_attribute = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                           ? DWORD{FILE_ATTRIBUTE_DIRECTORY}
                           : DWORD{FILE_ATTRIBUTE_NORMAL};
  return TRUE;
}
