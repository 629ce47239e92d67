// JSON text for mhhost's --json lines.
#pragma once

#include <string>

// `bytes` as a JSON string with its quotes. Valid UTF-8 passes as it is; control characters,
// quotes and backslashes are escaped; a byte that is no part of valid UTF-8 (mail in a legacy
// code page) becomes the Latin-1 character of its value, so that the line stays valid JSON.
std::string jsonString(const std::string &bytes);
