// The scratch folder and the property check of the fuzz targets.
#include "fuzz/FuzzSupport.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

void fuzzCheckFailed(const char *condition, const char *file, int line) {
  std::fprintf(stderr, "%s:%d: property does not hold: %s\n", file, line, condition);
  std::abort();
}

namespace {

int removeEntry(const char *path, const struct stat *, int, struct FTW *) {
  return ::remove(path);
}

void removeTree(const std::string &dir) {
  ::nftw(dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
}

std::string makeScratchDir() {
  struct stat status;
  const char *chosen = std::getenv("TUK_FUZZ_SCRATCH");
  const char *base = chosen != nullptr && *chosen != '\0' ? chosen : "/dev/shm";
  if (::stat(base, &status) != 0 || !S_ISDIR(status.st_mode) || ::access(base, W_OK) != 0) {
    const char *tmp = std::getenv("TMPDIR");
    base = tmp != nullptr && *tmp != '\0' ? tmp : "/tmp";
  }
  std::string pattern = std::string(base) + "/tuk-fuzz-XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) {
    std::perror("mkdtemp");
    std::abort();
  }
  return pattern;
}

} // namespace

const std::string &scratchDir() {
  // Never destroyed: the clean-up at exit runs after the statics' destructors.
  static const std::string *const dir = [] {
    const auto *made = new std::string(makeScratchDir());
    std::atexit([] { removeTree(scratchDir()); });
    return made;
  }();
  return *dir;
}

bool writeBytes(const std::string &path, const uint8_t *data, size_t size) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (fd < 0)
    return false;
  size_t written = 0;
  while (written < size) {
    const ssize_t count = ::write(fd, data + written, size - written);
    if (count <= 0)
      break;
    written += static_cast<size_t>(count);
  }
  return ::close(fd) == 0 && written == size;
}

void emptyDir(const std::string &dir) {
  removeTree(dir);
  ::mkdir(dir.c_str(), 0700);
}
