// HandleObject, FileObject and UniqueFd, private to the platform library: the objects behind
// HANDLE values, and an owned descriptor.
#pragma once

#include "WinTypes.h"

#include <cstdint>
#include <unistd.h>

// Owns one POSIX file descriptor and closes it once.
class UniqueFd {
public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(const UniqueFd &) = delete;
  UniqueFd &operator=(const UniqueFd &) = delete;
  ~UniqueFd() {
    if (fd_ >= 0)
      ::close(fd_);
  }

  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }
  // Gives the descriptor up without closing it.
  int release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }

private:
  int fd_ = -1;
};

// Root of every object a HANDLE points to. CloseHandle deletes through this base, whatever
// the kind; a call that needs one kind finds it with handleAs.
class HandleObject {
public:
  HandleObject() = default;
  HandleObject(const HandleObject &) = delete;
  HandleObject &operator=(const HandleObject &) = delete;
  virtual ~HandleObject() = default;
};

// An open regular file (CreateFileA).
class FileObject final : public HandleObject {
public:
  explicit FileObject(int fd) : fd(fd) {}
  UniqueFd fd;
  // The largest size GetFileSize has told of this file: a mapping made later covers it even
  // when the file has shrunk since, so that no read below it leaves the view.
  uint64_t sizeReported = 0;
};

inline HANDLE toHandle(HandleObject *object) {
  return static_cast<HANDLE>(object);
}

// The object of kind T behind `handle`, or null for a null or invalid handle or another kind.
template <class T> T *handleAs(HANDLE handle) {
  if (handle == nullptr || handle == INVALID_HANDLE_VALUE)
    return nullptr;
  return dynamic_cast<T *>(static_cast<HandleObject *>(handle));
}
