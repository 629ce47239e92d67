// The few Windows scalar types and constants that the stand-ins and the agent share; on
// Windows, the system's own.
#pragma once

#include <cstdint>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else

typedef uint32_t DWORD;
typedef int32_t BOOL;
typedef uint32_t UINT;
typedef int32_t LONG;
typedef void *HANDLE;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif

// An all-ones handle, as the platform's file calls return on failure.
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(~static_cast<uintptr_t>(0)))

// System error numbers that the stand-ins report through GetLastError.
enum : DWORD {
  ERROR_SUCCESS = 0,
  ERROR_FILE_NOT_FOUND = 2,
  ERROR_PATH_NOT_FOUND = 3,
  ERROR_TOO_MANY_OPEN_FILES = 4,
  ERROR_ACCESS_DENIED = 5,
  ERROR_INVALID_HANDLE = 6,
  ERROR_NOT_ENOUGH_MEMORY = 8,
  ERROR_NO_MORE_FILES = 18,
  ERROR_GEN_FAILURE = 31,
  ERROR_INVALID_PARAMETER = 87,
  ERROR_INSUFFICIENT_BUFFER = 122,
  ERROR_FILE_INVALID = 1006,
  ERROR_NO_UNICODE_TRANSLATION = 1113,
};

#endif // _WIN32
