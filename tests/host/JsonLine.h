// Reading one line of mhhost's --json output: a flat object of strings and numbers. A line
// that is not valid JSON of that shape reads as no object, so the tests also check the form.
#pragma once

#include <map>
#include <string>

struct JsonObject {
  std::map<std::string, std::string> strings; // decoded, as UTF-8
  std::map<std::string, long long> numbers;
};

bool parseJsonLine(const std::string &line, JsonObject &object);
