// FindFirstFileA / FindNextFileA and WIN32_FIND_DATAA: a directory listing in the order NTFS
// delivers it.
//
// "." and ".." come first, then the other entries by byte order of their names upper-cased
// in ASCII, ties broken by the raw bytes. Kinds come from the entry itself (lstat): a
// symbolic link is never a directory. The pattern's last component may be "*.*" or "*"
// (every entry); any other pattern matches names equal to it without regard to ASCII case.
#pragma once

#include "WinTypes.h"

#ifdef _WIN32
#else

struct WIN32_FIND_DATAA {
  DWORD dwFileAttributes; // FILE_ATTRIBUTE_DIRECTORY (0x10) or FILE_ATTRIBUTE_NORMAL (0x80)
  char cFileName[260];    // a longer name is cut to 259 bytes (and so never matches a file)
};

// INVALID_HANDLE_VALUE when the directory can't be read (ERROR_PATH_NOT_FOUND when it isn't
// there) or has no entry that matches (ERROR_FILE_NOT_FOUND); the listing is read whole at
// this call, and a listing that fails part way fails whole.
HANDLE FindFirstFileA(const char *pattern, WIN32_FIND_DATAA *found);
// FALSE with ERROR_NO_MORE_FILES after the last entry.
BOOL FindNextFileA(HANDLE search, WIN32_FIND_DATAA *found);
BOOL FindClose(HANDLE search);

#endif // _WIN32
