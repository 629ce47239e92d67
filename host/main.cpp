// mhhost: the reference host of the mail agent. Parses the command line and runs a command.
#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"

#include <cstdlib>

int main(int argc, char **argv) {
  // Without TZ, every conversion of a local time (the agent makes one for each object it
  // opens) asks the file system whether /etc/localtime has changed. The same zone, named:
  // read once.
  setenv("TZ", ":/etc/localtime", 0);
  CommandLine line;
  std::string error;
  if (!parseCommandLine(argc, argv, line, error))
    return reportUsageError(line.command, error);
  return runCommandLine(line);
}
