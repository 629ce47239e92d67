// Files and folders for tests: a temporary folder that removes itself, and whole-file I/O;
// and a child process or a time bound for what could crash or hang the test program.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#ifndef _WIN32
#include <unistd.h>
#endif

class TempDir {
public:
  TempDir();
  TempDir(const TempDir &) = delete;
  TempDir &operator=(const TempDir &) = delete;
  ~TempDir();
  const std::string &path() const { return path_; }
  // path() + "/" + relative
  std::string file(const std::string &relative) const;

private:
  std::string path_;
};

// `unit`, `times` over.
std::string repeated(const std::string &unit, size_t times);

// Writes `bytes` to `path`, making missing parent folders. Fails the test on error.
void writeFile(const std::string &path, const std::string &bytes);
void appendFile(const std::string &path, const std::string &bytes);
std::string readFile(const std::string &path);
bool fileExists(const std::string &path);
void makeDirs(const std::string &path);
// Sets the file's last-write time, in seconds since 1970.
void setFileTime(const std::string &path, int64_t seconds);
#ifndef _WIN32
// True while this process has a mapping of the file at `path`.
bool isMappedInThisProcess(const std::string &path);

// Runs `body` in a child process that exits with what it returns (by _exit: nothing of the test
// program's clean-up runs there) or dies of SIGALRM after `seconds` (0: never); the wait status.
int runInChild(const std::function<int()> &body, unsigned seconds);
// "exit N", or "signal N", for a wait status.
std::string describeStatus(int status);

// A bound on a test that could hang: the process dies of SIGALRM when the scope lasts too
// long, which fails the test instead of stalling the run.
class Watchdog {
public:
  explicit Watchdog(unsigned seconds) { alarm(seconds); }
  Watchdog(const Watchdog &) = delete;
  Watchdog &operator=(const Watchdog &) = delete;
  ~Watchdog() { alarm(0); }
};
#else
// On Windows a timer ends the process, with a line that says why.
class Watchdog {
public:
  explicit Watchdog(unsigned seconds);
  Watchdog(const Watchdog &) = delete;
  Watchdog &operator=(const Watchdog &) = delete;
  ~Watchdog();

private:
  void *timer_ = nullptr;
};
#endif
