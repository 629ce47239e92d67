// Opening files for reading, their size, and releasing any handle of the platform library.
#include "Files.h"

#include "FilesFaults.h"
#include "FilesHandles.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>

HANDLE CreateFileA(const char *name, DWORD access, DWORD /*shareMode*/,
                   SECURITY_ATTRIBUTES * /*security*/, DWORD disposition, DWORD /*flags*/,
                   HANDLE /*templateFile*/) {
  if (name == nullptr || access != GENERIC_READ || disposition != OPEN_EXISTING) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  // O_NONBLOCK: opening a FIFO for reading would otherwise wait for a writer; the fstat below
  // refuses it anyway. O_NOCTTY: a terminal named by mistake must not become ours.
  const int opened = injectedFailure(FileOperation::OpenFile)
                         ? -1
                         : ::open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (opened < 0) {
    SetLastError(errorFromErrno(errno));
    return INVALID_HANDLE_VALUE;
  }
  UniqueFd fd(opened);
  struct stat status;
  if (::fstat(fd.get(), &status) != 0) {
    SetLastError(errorFromErrno(errno));
    return INVALID_HANDLE_VALUE;
  }
  // Windows refuses a directory opened this way with "access denied"; devices, FIFOs and
  // sockets are no mail files and can't be mapped, so they get the same answer.
  if (!S_ISREG(status.st_mode)) {
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
  }
  auto *file = new (std::nothrow) FileObject(fd.get());
  if (file == nullptr) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
  }
  // The descriptor now belongs to the file object.
  fd.release();
  return toHandle(file);
}

DWORD GetFileSize(HANDLE handle, DWORD *sizeHigh) {
  FileObject *file = handleAs<FileObject>(handle);
  if (file == nullptr) {
    SetLastError(ERROR_INVALID_HANDLE);
    return 0xFFFFFFFFu;
  }
  struct stat status;
  if (::fstat(file->fd.get(), &status) != 0) {
    SetLastError(errorFromErrno(errno));
    return 0xFFFFFFFFu;
  }
  const auto size = static_cast<uint64_t>(status.st_size);
  if (size > file->sizeReported)
    file->sizeReported = size;
  if (sizeHigh != nullptr)
    *sizeHigh = static_cast<DWORD>(size >> 32);
  // A low part of 0xFFFFFFFF is a valid size; the cleared error tells it from a failure.
  SetLastError(ERROR_SUCCESS);
  return static_cast<DWORD>(size);
}

namespace {

// Seconds and nanoseconds since 1970 as 100 ns steps since 1601.
FILETIME fileTimeOf(const struct timespec &moment) {
  constexpr int64_t kStepsFrom1601To1970 = 116444736000000000;
  const auto steps = static_cast<uint64_t>(
      kStepsFrom1601To1970 + int64_t{moment.tv_sec} * 10000000 + moment.tv_nsec / 100);
  return FILETIME{static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

} // namespace

BOOL GetFileInformationByHandle(HANDLE handle, BY_HANDLE_FILE_INFORMATION *information) {
  const FileObject *file = handleAs<FileObject>(handle);
  if (file == nullptr || information == nullptr) {
    SetLastError(file == nullptr ? ERROR_INVALID_HANDLE : ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  struct stat status;
  if (::fstat(file->fd.get(), &status) != 0) {
    SetLastError(errorFromErrno(errno));
    return FALSE;
  }
  const auto size = static_cast<uint64_t>(status.st_size);
  const auto index = static_cast<uint64_t>(status.st_ino);
  information->dwFileAttributes = FILE_ATTRIBUTE_NORMAL;
  information->ftCreationTime = fileTimeOf(status.st_ctim);
  information->ftLastAccessTime = fileTimeOf(status.st_atim);
  information->ftLastWriteTime = fileTimeOf(status.st_mtim);
  information->dwVolumeSerialNumber = static_cast<DWORD>(status.st_dev);
  information->nFileSizeHigh = static_cast<DWORD>(size >> 32);
  information->nFileSizeLow = static_cast<DWORD>(size);
  information->nNumberOfLinks = static_cast<DWORD>(status.st_nlink);
  information->nFileIndexHigh = static_cast<DWORD>(index >> 32);
  information->nFileIndexLow = static_cast<DWORD>(index);
  return TRUE;
}

BOOL CloseHandle(HANDLE handle) {
  if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  delete static_cast<HandleObject *>(handle);
  return TRUE;
}
