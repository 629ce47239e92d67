// Files, folders and child processes for tests, on POSIX.
#include "tests/support/TestFiles.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
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
