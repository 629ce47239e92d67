// The exit statuses of mhhost, and how a command reports a failure.
#pragma once

#include <string>

enum ExitStatus : int {
  kExitOk = 0,
  kExitError = 1, // the command could not do its work
  kExitUsage = 2  // the command line was wrong
};

// Writes "mhhost: message" to standard error and returns kExitError.
int reportError(const std::string &message);
// Writes "mhhost COMMAND: message" and a hint at --help to standard error; returns kExitUsage.
int reportUsageError(const std::string &command, const std::string &message);
// Writes "mhhost: warning: message" to standard error.
void reportWarning(const std::string &message);
