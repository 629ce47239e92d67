// The machine a benchmark runs on: where its programs are, how busy it is, and removing the
// folders it wrote.
#pragma once

#include <string>

// A benchmark's command line, an argument at a time. `--help` and `-h` print the usage and
// end the program.
class BenchArguments {
public:
  // `program` names the benchmark in its messages; `usage` is its usage text.
  BenchArguments(int argc, char **argv, const char *program, const char *usage)
      : argc_(argc), argv_(argv), program_(program), usage_(usage) {}
  // Moves to the next argument; false after the last.
  bool next();
  const std::string &current() const { return current_; }
  // The value that follows the current option.
  std::string value();
  // Says `problem` and the usage, and ends the program with status 2.
  [[noreturn]] void fail(const std::string &problem) const;

private:
  int argc_;
  char **argv_;
  const char *program_;
  const char *usage_;
  int at_ = 0;
  std::string current_;
};

// This program's path, or `fallback` when /proc does not tell it.
std::string selfPath(const char *fallback);
std::string directoryOf(const std::string &path);
bool isExecutable(const std::string &path);
// Removes `path` and everything below it, without following links.
void removeTree(const std::string &path);
// The first line of /proc/loadavg: the load over 1, 5 and 15 minutes, and the processes.
std::string loadAverage();
