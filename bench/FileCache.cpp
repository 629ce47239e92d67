// Dropping files from the page cache and reading them back in.
#include "bench/FileCache.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

class Fd {
public:
  explicit Fd(const std::string &path) : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  Fd(const Fd &) = delete;
  Fd &operator=(const Fd &) = delete;
  ~Fd() {
    if (fd_ >= 0)
      ::close(fd_);
  }
  int get() const { return fd_; }

private:
  int fd_;
};

} // namespace

void dropFromCache(const std::vector<std::string> &files) {
  for (const std::string &path : files) {
    const Fd fd(path);
    if (fd.get() < 0)
      continue;
    ::fdatasync(fd.get());
    ::posix_fadvise(fd.get(), 0, 0, POSIX_FADV_DONTNEED);
  }
}

uint64_t readThrough(const std::vector<std::string> &files) {
  std::vector<char> buffer(1 << 20);
  uint64_t total = 0;
  for (const std::string &path : files) {
    const Fd fd(path);
    if (fd.get() < 0)
      continue;
    for (;;) {
      const ssize_t n = ::read(fd.get(), buffer.data(), buffer.size());
      if (n <= 0)
        break;
      total += static_cast<uint64_t>(n);
    }
  }
  return total;
}
