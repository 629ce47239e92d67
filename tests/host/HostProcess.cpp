// fork, exec and wait, with both outputs read through poll so that neither pipe fills up.
#include "tests/host/HostProcess.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

// Both ends close with the object unless closed before.
struct Pipe {
  int ends[2] = {-1, -1};
  int &read = ends[0], &write = ends[1];
  Pipe() { (void)!pipe2(ends, O_CLOEXEC); }
  ~Pipe() { close(0), close(1); }
  void close(int end) {
    if (ends[end] >= 0)
      ::close(ends[end]);
    ends[end] = -1;
  }
};

std::vector<std::string>
childEnvironment(const std::vector<std::pair<std::string, std::string>> &added) {
  const auto isAdded = [&](const std::string &name) {
    for (const auto &variable : added)
      if (variable.first == name)
        return true;
    return false;
  };
  std::vector<std::string> variables;
  for (char **entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    const std::string name = text.substr(0, text.find('='));
    if (!isAdded(name) && name != "TZ")
      variables.push_back(text);
  }
  for (const auto &variable : added)
    variables.push_back(variable.first + "=" + variable.second);
  if (!isAdded("TZ"))
    variables.push_back("TZ=UTC");
  return variables;
}

} // namespace

HostResult runProgram(const std::string &program, const std::vector<std::string> &arguments,
                      const std::vector<std::pair<std::string, std::string>> &environment,
                      const std::string &input, Input inputKind) {
  HostResult result;
  std::vector<std::string> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char *> argv;
  argv.reserve(words.size() + 1);
  for (std::string &word : words)
    argv.push_back(&word[0]);
  argv.push_back(nullptr);
  std::vector<std::string> variables = childEnvironment(environment);
  std::vector<char *> envp;
  envp.reserve(variables.size() + 1);
  for (std::string &variable : variables)
    envp.push_back(&variable[0]);
  envp.push_back(nullptr);

  Pipe in, out, err;
  // A terminal: the pseudo-terminal's other side, where the test types.
  int terminal = -1;
  std::string terminalName;
  if (inputKind == Input::Terminal) {
    terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
      ADD_FAILURE() << "no pseudo-terminal: " << std::strerror(errno);
      return result;
    }
    terminalName = ptsname(terminal);
  }
  const pid_t child = fork();
  if (child < 0) {
    ADD_FAILURE() << "fork: " << std::strerror(errno);
    return result;
  }
  if (child == 0) {
    const int inputFd = !terminalName.empty() ? open(terminalName.c_str(), O_RDWR)
                        : input.empty()       ? open("/dev/null", O_RDONLY)
                                              : in.read;
    dup2(inputFd, STDIN_FILENO);
    dup2(out.write, STDOUT_FILENO);
    dup2(err.write, STDERR_FILENO);
    execve(program.c_str(), argv.data(), envp.data());
    _exit(127);
  }
  in.close(0);
  out.close(1);
  err.close(1);
  if (!input.empty()) {
    // Small inputs fit the pipe or the terminal's buffer at once; the program reads them
    // when it asks.
    const int typed = terminal >= 0 ? terminal : in.write;
    const ssize_t written = write(typed, input.data(), input.size());
    EXPECT_EQ(static_cast<ssize_t>(input.size()), written);
  }
  in.close(1);

  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
  struct pollfd ends[2] = {{out.read, POLLIN, 0}, {err.read, POLLIN, 0}};
  std::string *texts[2] = {&result.out, &result.err};
  int open = 2;
  while (open > 0 && std::chrono::steady_clock::now() < deadline) {
    if (poll(ends, 2, 1000) < 0 && errno != EINTR)
      break;
    for (int i = 0; i < 2; ++i) {
      if (ends[i].fd < 0 || (ends[i].revents & (POLLIN | POLLHUP | POLLERR)) == 0)
        continue;
      char buffer[65536];
      const ssize_t got = read(ends[i].fd, buffer, sizeof buffer);
      if (got > 0) {
        texts[i]->append(buffer, static_cast<size_t>(got));
      } else {
        ends[i].fd = -1;
        --open;
      }
    }
  }
  if (open > 0) {
    ADD_FAILURE() << program << " ran too long";
    kill(child, SIGKILL);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (terminal >= 0)
    close(terminal);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

std::vector<std::string> linesOf(const std::string &text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    const size_t end = text.find('\n', start);
    lines.push_back(text.substr(start, end == std::string::npos ? end : end - start));
    if (end == std::string::npos)
      break;
    start = end + 1;
  }
  return lines;
}

std::vector<std::string> linesWith(const std::string &text, const std::string &part) {
  std::vector<std::string> found;
  for (const std::string &line : linesOf(text))
    if (line.find(part) != std::string::npos)
      found.push_back(line);
  return found;
}
