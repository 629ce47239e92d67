// Error and warning lines on standard error.
#include "host/ExitStatus.h"

#include <cstdio>

int reportError(const std::string &message) {
  std::fprintf(stderr, "mhhost: %s\n", message.c_str());
  return kExitError;
}

int reportUsageError(const std::string &command, const std::string &message) {
  const std::string who = command.empty() ? "mhhost" : "mhhost " + command;
  std::fprintf(stderr, "%s: %s\nTry '%s --help'.\n", who.c_str(), message.c_str(), who.c_str());
  return kExitUsage;
}

void reportWarning(const std::string &message) {
  std::fprintf(stderr, "mhhost: warning: %s\n", message.c_str());
}
