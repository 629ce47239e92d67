// Paths, the load average and removing folders, for the benchmark programs.
#include "bench/BenchHost.h"

#include <cstdio>
#include <cstdlib>
#include <ftw.h>
#include <limits.h>
#include <unistd.h>

namespace {

int removeEntry(const char *path, const struct stat *, int, struct FTW *) {
  return ::remove(path);
}

} // namespace

std::string selfPath(const char *fallback) {
  char path[PATH_MAX];
  const ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
  if (n <= 0)
    return fallback;
  return std::string(path, static_cast<size_t>(n));
}

std::string directoryOf(const std::string &path) {
  return path.substr(0, path.rfind('/'));
}

bool isExecutable(const std::string &path) {
  return ::access(path.c_str(), X_OK) == 0;
}

void removeTree(const std::string &path) {
  ::nftw(path.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
}

std::string loadAverage() {
  std::FILE *file = std::fopen("/proc/loadavg", "r");
  char text[128] = "?";
  if (file) {
    if (!std::fgets(text, sizeof text, file))
      text[0] = 0;
    std::fclose(file);
  }
  std::string line = text;
  while (!line.empty() && line.back() == '\n')
    line.pop_back();
  return line;
}

bool BenchArguments::next() {
  if (++at_ >= argc_)
    return false;
  current_ = argv_[at_];
  if (current_ == "--help" || current_ == "-h") {
    std::fputs(usage_, stdout);
    std::exit(0);
  }
  return true;
}

std::string BenchArguments::value() {
  if (at_ + 1 >= argc_)
    fail(current_ + " needs a value");
  return argv_[++at_];
}

void BenchArguments::fail(const std::string &problem) const {
  std::fprintf(stderr, "%s: %s\n%s", program_, problem.c_str(), usage_);
  std::exit(2);
}
