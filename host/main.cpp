// mhhost: the reference host of the mail agent. Parses the command line and runs a command.
#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"

int main(int argc, char **argv) {
  CommandLine line;
  std::string error;
  if (!parseCommandLine(argc, argv, line, error))
    return reportUsageError(line.command, error);
  return runCommandLine(line);
}
