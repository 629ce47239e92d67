// Files and read-only mappings: the Windows file calls the mail code makes, on POSIX, and
// ScopedHandle and ScopedView, the owners of the handles and views those calls give.
//
// Handles are owned objects of this library; CloseHandle releases them. Every call that
// fails records a system error number for GetLastError (per thread).
#pragma once

#include "WinTypes.h"

#include <cstddef>

#ifdef _WIN32
#else

enum : DWORD {
  GENERIC_READ = 0x80000000u,
  FILE_SHARE_READ = 0x1,
  FILE_SHARE_WRITE = 0x2,
  OPEN_EXISTING = 3,
  FILE_ATTRIBUTE_NORMAL = 0x80,
  PAGE_READONLY = 0x02,
  FILE_MAP_READ = 0x04,
};

struct SECURITY_ATTRIBUTES;

// Opens an existing regular file for reading. Only GENERIC_READ with OPEN_EXISTING is
// served; the share mode is accepted as given (POSIX never locks a reader out). A directory
// or any other file that is not a regular file is refused with ERROR_ACCESS_DENIED, and
// opening never blocks (a FIFO is refused, not waited on). INVALID_HANDLE_VALUE on failure.
HANDLE CreateFileA(const char *name, DWORD access, DWORD shareMode, SECURITY_ATTRIBUTES *security,
                   DWORD disposition, DWORD flags, HANDLE templateFile);

// The low 32 bits of the file's size now; the high part goes to `sizeHigh` when it is given.
// 0xFFFFFFFF with GetLastError set on failure; on success GetLastError is ERROR_SUCCESS, which
// tells a low part of 0xFFFFFFFF from a failure.
DWORD GetFileSize(HANDLE file, DWORD *sizeHigh);

// An unnamed read-only mapping of the whole file (PAGE_READONLY, sizes 0 and 0).
// A file of zero bytes is refused with ERROR_FILE_INVALID. Null on failure. Where the file
// has shrunk since GetFileSize told its size on this handle, the mapping still has that size,
// so that a caller reading below the size it was told never leaves the view; the bytes past
// the new end fault as below.
HANDLE CreateFileMappingA(HANDLE file, SECURITY_ATTRIBUTES *security, DWORD protect,
                          DWORD maximumSizeHigh, DWORD maximumSizeLow, const char *name);

// A read-only shared view of the whole mapping (FILE_MAP_READ, offset 0, size 0). Null on
// failure. Bytes of the view that another process cuts off by truncating the file fault
// when touched: read them only inside runGuarded (FaultGuard.h). The view asks the kernel
// for huge pages, so that what it reads from disk is cached, and mapped, in 2 MB pieces.
void *MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow, size_t size);

BOOL UnmapViewOfFile(const void *base);

// What names a file and its state, as GetFileInformationByHandle gives it. The volume serial
// number and file index are the device and inode numbers (low 32 bits of the device);
// ftLastWriteTime counts 100 ns steps since 1601, as on Windows.
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};
struct BY_HANDLE_FILE_INFORMATION {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD dwVolumeSerialNumber;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD nNumberOfLinks;
  DWORD nFileIndexHigh;
  DWORD nFileIndexLow;
};

// The file's identity, size and times now. FALSE with GetLastError set on failure.
BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION *information);
BOOL CloseHandle(HANDLE handle);

DWORD GetLastError();
void SetLastError(DWORD error);

// The Windows error number that stands for a POSIX errno value.
DWORD errorFromErrno(int error);

enum : DWORD { INVALID_FILE_ATTRIBUTES = 0xFFFFFFFFu, FILE_ATTRIBUTE_DIRECTORY = 0x10 };

// INVALID_FILE_ATTRIBUTES for a name that can't be found (an empty name included), else
// FILE_ATTRIBUTE_DIRECTORY for a directory and FILE_ATTRIBUTE_NORMAL for anything else.
// Follows symbolic links, as the Windows call does for a path.
DWORD GetFileAttributesA(const char *name);

#endif // _WIN32

// Owns a HANDLE from the calls above and closes it once.
class ScopedHandle {
public:
  ScopedHandle() = default;
  explicit ScopedHandle(HANDLE handle) : handle_(handle) {}
  ScopedHandle(const ScopedHandle &) = delete;
  ScopedHandle &operator=(const ScopedHandle &) = delete;
  ~ScopedHandle() { reset(); }

  HANDLE get() const { return handle_; }
  bool valid() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
  void reset(HANDLE handle = INVALID_HANDLE_VALUE);

private:
  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// Owns a view from MapViewOfFile and unmaps it once.
class ScopedView {
public:
  ScopedView() = default;
  explicit ScopedView(const void *base) : base_(static_cast<const unsigned char *>(base)) {}
  ScopedView(const ScopedView &) = delete;
  ScopedView &operator=(const ScopedView &) = delete;
  ~ScopedView() { reset(); }

  const unsigned char *get() const { return base_; }
  void reset(const void *base = nullptr);

private:
  const unsigned char *base_ = nullptr;
};
