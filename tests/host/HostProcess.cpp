// fork, exec and wait, with the outputs gathered in files.
#include "tests/host/HostProcess.h"

#include "tests/support/TestFiles.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sstream>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {
// argv and envp of a program: `environment` ahead of this process's, and TZ=UTC ahead of it
// unless given. getenv finds a variable's first occurrence.
struct Command {
  Command(const std::string &program, const std::vector<std::string> &arguments,
          const std::vector<std::pair<std::string, std::string>> &environment)
      : words{program} {
    words.insert(words.end(), arguments.begin(), arguments.end());
    for (const auto &variable : environment)
      variables.push_back(variable.first + "=" + variable.second);
    variables.push_back("TZ=UTC");
    for (char **entry = environ; *entry != nullptr; ++entry)
      variables.push_back(*entry);
    for (std::string &word : words)
      argv.push_back(&word[0]);
    for (std::string &variable : variables)
      envp.push_back(&variable[0]);
    argv.push_back(nullptr);
    envp.push_back(nullptr);
  }
  // In the child: a program that hangs dies of SIGALRM, which execve keeps.
  [[noreturn]] void exec() {
    alarm(120);
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  std::vector<std::string> words, variables;
  std::vector<char *> argv, envp;
};
} // namespace

HostResult runProgram(const std::string &program, const std::vector<std::string> &arguments,
                      const std::vector<std::pair<std::string, std::string>> &environment,
                      const std::string &input, Input inputKind) {
  HostResult result;
  Command command(program, arguments, environment);
  // Standard input from a file, or a pseudo-terminal where the test types; both outputs into
  // files, read once the program has ended.
  TempDir files;
  writeFile(files.file("in"), input);
  int terminal = -1;
  std::string inputName = files.file("in");
  if (inputKind == Input::Terminal) {
    terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
      ADD_FAILURE() << "no pseudo-terminal: " << std::strerror(errno);
      return result;
    }
    inputName = ptsname(terminal);
  }
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(open(inputName.c_str(), O_RDWR | O_CLOEXEC), STDIN_FILENO);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    dup2(open(files.file("out").c_str(), flags, 0600), STDOUT_FILENO);
    dup2(open(files.file("err").c_str(), flags, 0600), STDERR_FILENO);
    command.exec();
  }
  if (terminal >= 0) {
    // A small input fits the terminal's buffer at once; the program reads it when it asks.
    EXPECT_EQ(static_cast<ssize_t>(input.size()), write(terminal, input.data(), input.size()));
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child)
    ADD_FAILURE() << "fork or wait: " << std::strerror(errno);
  if (terminal >= 0)
    close(terminal);
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM)
    ADD_FAILURE() << program << " ran too long";
  result.out = readFile(files.file("out"));
  result.err = readFile(files.file("err"));
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

pid_t startProgram(const std::string &program, const std::vector<std::string> &arguments,
                   const std::string &outputFile) {
  Command command(program, arguments, {});
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      dup2(null, fd);
    if (!outputFile.empty())
      dup2(open(outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), STDOUT_FILENO);
    command.exec();
  }
  return child;
}

std::vector<std::string> linesOf(const std::string &text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);)
    lines.push_back(line);
  return lines;
}

std::vector<std::string> linesWith(const std::string &text, const std::string &part) {
  std::vector<std::string> found;
  for (const std::string &line : linesOf(text))
    if (line.find(part) != std::string::npos)
      found.push_back(line);
  return found;
}
