// The scratch folder and the property check of the fuzz targets.
#include "fuzz/FuzzSupport.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

void fuzzCheckFailed(const char *condition, const char *file, int line) {
  std::fprintf(stderr, "%s:%d: property does not hold: %s\n", file, line, condition);
  std::abort();
}

namespace {
std::string makeScratchDir() {
  const char *chosen = std::getenv("TUK_FUZZ_SCRATCH"), *tmp = std::getenv("TMPDIR");
  const char *base = chosen != nullptr && *chosen != '\0' ? chosen
                     : ::access("/dev/shm", W_OK) == 0    ? "/dev/shm"
                     : tmp != nullptr && *tmp != '\0'     ? tmp
                                                          : "/tmp";
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
    std::atexit([] {
      std::error_code ignored;
      std::filesystem::remove_all(scratchDir(), ignored);
    });
    return made;
  }();
  return *dir;
}

bool writeBytes(const std::string &path, const uint8_t *data, size_t size) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
  file.close();
  return !file.fail();
}

void emptyDir(const std::string &dir) {
  std::error_code ignored;
  std::filesystem::remove_all(dir, ignored);
  std::filesystem::create_directory(dir, ignored);
}
