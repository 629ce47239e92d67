// Spawning, timing and sampling a child process.
#include "bench/ProcessRun.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char **environ;

namespace {

class Fd {
public:
  explicit Fd(int fd = -1) : fd_(fd) {}
  Fd(const Fd &) = delete;
  Fd &operator=(const Fd &) = delete;
  ~Fd() { reset(); }
  int get() const { return fd_; }
  void reset(int fd = -1) {
    if (fd_ >= 0)
      ::close(fd_);
    fd_ = fd;
  }

private:
  int fd_;
};

// The values `name` (in kB) of a /proc status text, in bytes; 0 when absent.
uint64_t statusField(const char *text, const char *name) {
  const char *line = std::strstr(text, name);
  return line ? std::strtoull(line + std::strlen(name), nullptr, 10) * 1024 : 0;
}

// Samples a running process's memory from its /proc status file: the resident anonymous
// memory now, and the peak resident size of its present program (file pages included).
void sample(int statusFd, uint64_t &peakAnon, uint64_t &peakResident) {
  char text[4096];
  const ssize_t n = ::pread(statusFd, text, sizeof text - 1, 0);
  if (n <= 0)
    return;
  text[n] = 0;
  peakAnon = std::max(peakAnon, statusField(text, "\nRssAnon:"));
  peakResident = std::max(peakResident, statusField(text, "\nVmHWM:"));
}

void drain(int fd, std::string &output) {
  char buffer[4096];
  for (;;) {
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n <= 0)
      return;
    output.append(buffer, static_cast<size_t>(n));
  }
}

} // namespace

ProcessRun runProcess(const std::vector<std::string> &argv,
                      const std::vector<std::string> &environment, bool captureOutput) {
  ProcessRun run;
  std::vector<char *> args;
  for (const std::string &arg : argv)
    args.push_back(const_cast<char *>(arg.c_str()));
  args.push_back(nullptr);
  std::vector<std::string> envStrings;
  for (char **e = environ; *e; ++e)
    envStrings.push_back(*e);
  envStrings.insert(envStrings.end(), environment.begin(), environment.end());
  std::vector<char *> env;
  for (const std::string &entry : envStrings)
    env.push_back(const_cast<char *>(entry.c_str()));
  env.push_back(nullptr);

  int pipeFds[2] = {-1, -1};
  if (captureOutput && ::pipe2(pipeFds, O_CLOEXEC) != 0)
    return run;
  Fd readEnd(pipeFds[0]), writeEnd(pipeFds[1]);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (captureOutput)
    posix_spawn_file_actions_adddup2(&actions, writeEnd.get(), STDOUT_FILENO);
  else
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);

  const auto start = std::chrono::steady_clock::now();
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, args[0], &actions, nullptr, args.data(), env.data());
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) {
    std::fprintf(stderr, "store_bench: cannot run %s: %s\n", args[0], std::strerror(spawned));
    return run;
  }
  run.started = true;
  writeEnd.reset();
  if (captureOutput)
    ::fcntl(readEnd.get(), F_SETFL, O_NONBLOCK);
  const std::string statusPath = "/proc/" + std::to_string(pid) + "/status";
  Fd status(::open(statusPath.c_str(), O_RDONLY | O_CLOEXEC));
  // A process descriptor wakes the wait below the moment the child ends; without one the
  // wait is a plain sleep and the end is seen up to a millisecond late.
#ifdef SYS_pidfd_open
  Fd exited(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
#else
  Fd exited;
#endif

  int waitStatus = 0;
  struct rusage usage {};
  for (;;) {
    const pid_t done = ::wait4(pid, &waitStatus, WNOHANG, &usage);
    if (done == pid || (done < 0 && errno != EINTR))
      break;
    if (status.get() >= 0)
      sample(status.get(), run.peakAnon, run.peakResident);
    if (captureOutput)
      drain(readEnd.get(), run.output);
    if (exited.get() >= 0) {
      struct pollfd ready = {exited.get(), POLLIN, 0};
      ::poll(&ready, 1, 1);
    } else {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (captureOutput) {
    ::fcntl(readEnd.get(), F_SETFL, 0);
    drain(readEnd.get(), run.output);
  }
  run.exitStatus = WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : -1;
  auto seconds = [](const timeval &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  run.cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
  return run;
}
