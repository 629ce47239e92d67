// The per-thread last error of the stand-ins, and the Windows numbers for POSIX errors.
#include "Files.h"

#include <cerrno>

namespace {
// Per thread, as on Windows: a failure on one thread never shows on another.
thread_local DWORD lastError = ERROR_SUCCESS;
} // namespace

DWORD GetLastError() {
  return lastError;
}

void SetLastError(DWORD error) {
  lastError = error;
}

DWORD errorFromErrno(int error) {
  switch (error) {
  case 0:
    return ERROR_SUCCESS;
  case ENOENT:
    return ERROR_FILE_NOT_FOUND;
  case ENOTDIR:
    return ERROR_PATH_NOT_FOUND;
  case EMFILE:
  case ENFILE:
    return ERROR_TOO_MANY_OPEN_FILES;
  case EACCES:
  case EPERM:
    return ERROR_ACCESS_DENIED;
  case ENOMEM:
    return ERROR_NOT_ENOUGH_MEMORY;
  default:
    // The agent only logs the number; anything without a closer match is a general failure.
    return ERROR_GEN_FAILURE;
  }
}
