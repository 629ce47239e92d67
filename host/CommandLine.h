// The command line of mhhost: one command, its options (anywhere on the line) and its
// arguments. Options are "--name VALUE", "--name=VALUE" or a flag "--name"; "--" ends them.
#pragma once

#include <map>
#include <string>
#include <vector>

struct CommandLine {
  std::string command;                        // empty when none was given
  std::map<std::string, std::string> options; // by name without "--"; "" for a flag
  std::vector<std::string> arguments;
  // Set by the demo for the commands it runs: no question is put to the person.
  bool askNothing = false;

  bool has(const std::string &name) const { return options.count(name) != 0; }
  std::string value(const std::string &name, const std::string &fallback = "") const;
};

// Parses argv[1..]. On a malformed line (an unknown option, a missing value) returns false
// with `error` set, and `out.command` as far as it was found.
bool parseCommandLine(int argc, char **argv, CommandLine &out, std::string &error);
