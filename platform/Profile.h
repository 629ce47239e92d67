// GetPrivateProfileStringA: one value of an INI file.
#pragma once

#include "WinTypes.h"

#ifdef _WIN32
#else

// The value of `key` in `section` of `fileName`: sections and keys compare without regard to
// ASCII case, the first of each counts, and the value is trimmed of blanks and of one pair of
// matching quotes around it. `defaultValue` (null: "") stands in when the file, the section
// or the key is missing. At most `size` - 1 bytes and a zero are copied to `buffer`; the
// result is the count copied. A null section or key, or a size of 0, gives 0 and the default
// rules don't apply.
DWORD GetPrivateProfileStringA(const char *section, const char *key, const char *defaultValue,
                               char *buffer, DWORD size, const char *fileName);

#endif // _WIN32
