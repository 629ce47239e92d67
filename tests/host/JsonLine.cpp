// A strict reader of flat JSON objects.
#include "tests/host/JsonLine.h"

#include <cstdlib>
#include <cstring>

namespace {

void appendUtf8(std::string &out, unsigned code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | code >> 6);
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | code >> 12);
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

// A string at `at`, which is left behind its closing quote.
bool readString(const std::string &text, size_t &at, std::string &out) {
  if (at >= text.size() || text[at++] != '"')
    return false;
  while (at < text.size()) {
    const unsigned char c = static_cast<unsigned char>(text[at++]);
    if (c == '"')
      return true;
    if (c < 0x20)
      return false; // a control character must be escaped
    if (c != '\\') {
      out += static_cast<char>(c);
      continue;
    }
    const char escape = at < text.size() ? text[at++] : '\0';
    static const char kEscapes[] = "\"\"\\\\//b\bf\fn\nr\rt\t";
    const char *known = escape != '\0' ? std::strchr(kEscapes, escape) : nullptr;
    if (known != nullptr && (known - kEscapes) % 2 == 0) {
      out += known[1];
    } else if (escape == 'u' && at + 4 <= text.size()) {
      const std::string hex = text.substr(at, 4);
      char *end = nullptr;
      appendUtf8(out, static_cast<unsigned>(std::strtoul(hex.c_str(), &end, 16)));
      if (end != hex.c_str() + 4)
        return false;
      at += 4;
    } else {
      return false;
    }
  }
  return false;
}

} // namespace

bool parseJsonLine(const std::string &line, JsonObject &object) {
  size_t at = 0;
  const auto skip = [&] {
    while (at < line.size() && line[at] == ' ')
      ++at;
  };
  const auto take = [&](char c) {
    skip();
    return at < line.size() && line[at] == c ? (++at, true) : false;
  };
  if (!take('{'))
    return false;
  if (!take('}')) {
    do {
      std::string key;
      skip();
      if (!readString(line, at, key) || !take(':'))
        return false;
      skip();
      if (at < line.size() && line[at] == '"') {
        if (!readString(line, at, object.strings[key]))
          return false;
        continue;
      }
      if (line.compare(at, 4, "null") == 0) {
        at += 4; // a value that is not there: the key stays out of both maps
        continue;
      }
      const size_t start = at;
      at += at < line.size() && line[at] == '-';
      while (at < line.size() && line[at] >= '0' && line[at] <= '9')
        ++at;
      if (at == start || line[at - 1] == '-')
        return false;
      object.numbers[key] = std::strtoll(line.c_str() + start, nullptr, 10);
    } while (take(','));
    if (!take('}'))
      return false;
  }
  skip();
  return at == line.size();
}
