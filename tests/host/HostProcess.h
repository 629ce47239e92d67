// Running the built mhhost as a person would: its own process, arguments, environment and
// standard input; its exit status and both outputs come back.
#pragma once

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

struct HostResult {
  int status = -1; // the exit status; 128 + signal when it was killed
  std::string out;
  std::string err;
};

enum class Input { Pipe, Terminal };

// Runs `program` with `arguments` (argv[1..]), with `environment` added to this process's
// (TZ=UTC unless given), standard input from `input` (empty: /dev/null) through a pipe or a
// pseudo-terminal, as a person typing it. Stops it after 120 s.
HostResult runProgram(const std::string &program, const std::vector<std::string> &arguments,
                      const std::vector<std::pair<std::string, std::string>> &environment = {},
                      const std::string &input = "", Input inputKind = Input::Pipe);

// Starts `program` as runProgram runs it, with nothing for standard input, its standard
// output in `outputFile` (empty: dropped, as its standard error is), and returns at once: the
// process id, for a test that kills it.
pid_t startProgram(const std::string &program, const std::vector<std::string> &arguments,
                   const std::string &outputFile = "");

// The lines of a text, without their line ends.
std::vector<std::string> linesOf(const std::string &text);
// The lines that contain `part`.
std::vector<std::string> linesWith(const std::string &text, const std::string &part);
