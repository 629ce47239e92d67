// CFile::GetStatus and CFileStatus: a file's status by path.
#pragma once

#include "WinTypes.h"

#include <cstdint>

struct CFileStatus {
  int32_t m_mtime = 0; // last-write time, seconds since 1970, low 32 bits taken as signed
  uint64_t m_size = 0;
  DWORD m_attribute = 0; // FILE_ATTRIBUTE_DIRECTORY or FILE_ATTRIBUTE_NORMAL
};

class CFile {
public:
  // Fills `status` for the file at `path` (following symbolic links). FALSE when the file
  // can't be stat'ed; `status` is then left as it was.
  static BOOL GetStatus(const char *path, CFileStatus &status);
};
