// The machine a benchmark runs on: where its programs are, how busy it is, and removing the
// folders it wrote.
#pragma once

#include <string>

// This program's path, or `fallback` when /proc does not tell it.
std::string selfPath(const char *fallback);
std::string directoryOf(const std::string &path);
bool isExecutable(const std::string &path);
// Removes `path` and everything below it, without following links.
void removeTree(const std::string &path);
// The first line of /proc/loadavg: the load over 1, 5 and 15 minutes, and the processes.
std::string loadAverage();
