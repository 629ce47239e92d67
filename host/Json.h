// JSON text for mhhost's --json lines.
#pragma once

#include <string>

// `bytes` as a JSON string with its quotes. Valid UTF-8 passes as it is; control characters,
// quotes and backslashes are escaped; a byte that is no part of valid UTF-8 (a file name in a
// legacy code page) becomes its Windows-1252 character, as in mail, so the line stays JSON.
std::string jsonString(const std::string &bytes);
