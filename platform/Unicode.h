// Conversions between UTF-16 and the platform's multi-byte code page, which is UTF-8.
#pragma once

#include "Shell.h"

#include <string>

#ifdef _WIN32
#else

enum : UINT { CP_ACP = 0, CP_UTF8 = 65001 };
enum : DWORD { MB_ERR_INVALID_CHARS = 0x8 };

// UTF-16 to UTF-8 for code page CP_ACP or CP_UTF8; a lone surrogate becomes U+FFFD. `length`
// -1 takes the text up to and with its zero. With `bytesMax` 0 the bytes needed are returned
// and nothing is written; otherwise the bytes written, or 0 (ERROR_INSUFFICIENT_BUFFER) when
// they don't fit. 0 with ERROR_INVALID_PARAMETER for another code page or a null text.
// `defaultChar` and `usedDefault` must be null for UTF-8 and are not looked at.
int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR *wide, int length, char *bytes,
                        int bytesMax, const char *defaultChar, BOOL *usedDefault);

// UTF-8 to UTF-16, sized and measured likewise. Bytes that are no valid UTF-8 become U+FFFD,
// or with MB_ERR_INVALID_CHARS make the call fail with ERROR_NO_UNICODE_TRANSLATION.
int MultiByteToWideChar(UINT codePage, DWORD flags, const char *bytes, int length, WCHAR *wide,
                        int wideMax);

#endif // _WIN32

// Appends `code` to `out` in UTF-8 (any value below 0x110000; surrogates as they are).
void appendUtf8(std::string &out, char32_t code);
