// Reading files once through mappings.
#include "bench/MappedRead.h"

#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

uint64_t readMapped(const std::vector<std::string> &files) {
  uint64_t sum = 0;
  for (const std::string &path : files) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
      continue;
    struct stat status;
    if (::fstat(fd, &status) != 0 || status.st_size == 0) {
      ::close(fd);
      continue;
    }
    const auto size = static_cast<size_t>(status.st_size);
    void *view = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
    ::close(fd);
    if (view == MAP_FAILED)
      continue;
    const auto *bytes = static_cast<const unsigned char *>(view);
    uint64_t lanes[4] = {0, 0, 0, 0};
    size_t i = 0;
    for (; i + 32 <= size; i += 32) {
      uint64_t words[4];
      std::memcpy(words, bytes + i, sizeof words);
      for (int k = 0; k < 4; ++k)
        lanes[k] ^= words[k];
    }
    for (; i < size; ++i)
      lanes[0] ^= bytes[i];
    sum ^= lanes[0] ^ lanes[1] ^ lanes[2] ^ lanes[3];
    ::munmap(view, size);
  }
  return sum;
}
