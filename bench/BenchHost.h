// The machine a benchmark runs on: where its programs are, how busy it is, and removing the
// folders it wrote.
#pragma once

#include <string>

// A benchmark's command line, an argument at a time.
class BenchArguments {
public:
  // `usage` reports a problem and ends the program.
  BenchArguments(int argc, char **argv, void (*usage)(const char *problem))
      : argc_(argc), argv_(argv), usage_(usage) {}
  // Moves to the next argument; false after the last.
  bool next() { return ++at_ < argc_ && (current_ = argv_[at_], true); }
  const std::string &current() const { return current_; }
  // The value that follows the current option.
  std::string value();

private:
  int argc_;
  char **argv_;
  void (*usage_)(const char *);
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
