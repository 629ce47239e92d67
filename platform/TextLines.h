// Private to the platform library: the lines of a small text file (an INI file, the help
// file), read without ever blocking on something that is not a regular file.
#pragma once

#include <functional>
#include <string>

// Calls `visit` with each line of the regular file at `path`, without its line end (LF or CR
// LF), until `visit` returns false or the file ends. A line is cut at kLongestLine bytes.
// False when `path` names no readable regular file (a pipe, a folder, a missing file).
constexpr size_t kLongestLine = 1 << 20;
bool forEachLine(const char *path, const std::function<bool(const std::string &line)> &visit);
