// Files and folders for tests.
#include "tests/support/TestFiles.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

TempDir::TempDir() {
  const char *base = std::getenv("TMPDIR");
  std::string pattern = std::string(base && *base ? base : "/tmp") + "/tuk-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr)
    ADD_FAILURE() << "mkdtemp: " << std::strerror(errno);
  path_ = pattern;
}

namespace {
// Removes `path` and all below it; folders a test made unreadable are made readable first.
void removeTree(const std::filesystem::path &path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(std::filesystem::symlink_status(path, ignored))) {
    std::filesystem::permissions(path, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
    for (const auto &entry : std::filesystem::directory_iterator(path, ignored))
      removeTree(entry.path());
  }
  std::filesystem::remove(path, ignored);
}
} // namespace

TempDir::~TempDir() {
  if (!path_.empty())
    removeTree(path_);
}

std::string TempDir::file(const std::string &relative) const {
  return path_ + "/" + relative;
}

std::string repeated(const std::string &unit, size_t times) {
  std::string bytes;
  bytes.reserve(unit.size() * times);
  while (times-- > 0)
    bytes += unit;
  return bytes;
}

void makeDirs(const std::string &path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error)
    ADD_FAILURE() << "mkdir " << path << ": " << error.message();
}

static void writeWithMode(const std::string &path, const std::string &bytes,
                          std::ios::openmode mode) {
  const size_t slash = path.rfind('/');
  if (slash != std::string::npos && slash > 0)
    makeDirs(path.substr(0, slash));
  std::ofstream out(path, mode | std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out)
    ADD_FAILURE() << "cannot write " << path;
}

void writeFile(const std::string &path, const std::string &bytes) {
  writeWithMode(path, bytes, std::ios::trunc);
}

void appendFile(const std::string &path, const std::string &bytes) {
  writeWithMode(path, bytes, std::ios::app);
}

std::string readFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

bool fileExists(const std::string &path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0;
}

void setFileTime(const std::string &path, int64_t seconds) {
  const auto when = static_cast<time_t>(seconds);
  struct timeval times[2] = {{when, 0}, {when, 0}};
  if (utimes(path.c_str(), times) != 0)
    ADD_FAILURE() << "utimes " << path << ": " << std::strerror(errno);
}

bool isMappedInThisProcess(const std::string &path) {
  std::ifstream maps("/proc/self/maps");
  std::string line;
  while (std::getline(maps, line))
    if (line.size() >= path.size() &&
        line.compare(line.size() - path.size(), path.size(), path) == 0)
      return true;
  return false;
}

int runInChild(const std::function<int()> &body, unsigned seconds) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    alarm(seconds);
    _exit(body());
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child)
    ADD_FAILURE() << "fork or wait: " << std::strerror(errno);
  return status;
}

std::string describeStatus(int status) {
  if (WIFEXITED(status))
    return "exit " + std::to_string(WEXITSTATUS(status));
  return "signal " + std::to_string(WTERMSIG(status)) +
         (WTERMSIG(status) == SIGALRM ? " (did not end in time)" : "");
}
