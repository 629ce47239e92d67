// UniqueFd: a file descriptor that closes itself.
#pragma once

#include <unistd.h>

namespace cmn {

class UniqueFd {
public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd &&other) noexcept : fd_(other.release()) {}
  UniqueFd &operator=(UniqueFd &&other) noexcept {
    if (this != &other) {
      close();
      fd_ = other.release();
    }
    return *this;
  }
  UniqueFd(const UniqueFd &) = delete;
  UniqueFd &operator=(const UniqueFd &) = delete;
  ~UniqueFd() { close(); }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }

  // Closes now; false when close reports an error (a write-back that failed, on some file
  // systems). Closing an empty UniqueFd succeeds.
  bool close() {
    if (fd_ < 0)
      return true;
    const int result = ::close(fd_);
    fd_ = -1;
    return result == 0;
  }

private:
  int release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }

  int fd_ = -1;
};

} // namespace cmn
