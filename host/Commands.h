// The commands of mhhost, the table that describes them, and running one command line.
#pragma once

#include "host/CommandLine.h"
#include "host/HostSettings.h"

#include <string>
#include <vector>

using CommandFunction = int (*)(const CommandLine &line, const HostSettings &settings);

struct CommandSpec {
  const char *name;
  const char *synopsis;              // after "mhhost NAME"
  const char *help;                  // what it does, and its own options
  std::vector<const char *> options; // beside the common ones
  int fewestArguments;
  int mostArguments;
  bool needsClient; // --client or --key
  CommandFunction run;
};

// Checks the line against the table, reads the common options and runs the command.
// Returns the exit status.
int runCommandLine(const CommandLine &line);

int runConfig(const CommandLine &line, const HostSettings &settings);
int runList(const CommandLine &line, const HostSettings &settings);
int runIndex(const CommandLine &line, const HostSettings &settings);
int runSearch(const CommandLine &line, const HostSettings &settings);
int runShow(const CommandLine &line, const HostSettings &settings);
int runCat(const CommandLine &line, const HostSettings &settings);
int runDemo(const CommandLine &line, const HostSettings &settings);
int runStatus(const CommandLine &line, const HostSettings &settings);
int runServe(const CommandLine &line, const HostSettings &settings);
