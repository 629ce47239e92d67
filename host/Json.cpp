// JSON string escaping over bytes of unknown encoding.
#include "host/Json.h"

#include "host/reader/Charset.h"

#include <cstdio>

namespace {

void appendEscape(std::string &out, unsigned value) {
  char escape[8];
  std::snprintf(escape, sizeof escape, "\\u%04x", value);
  out += escape;
}

} // namespace

std::string jsonString(const std::string &bytes) {
  std::string text;
  appendUtf8OrWindows1252(bytes, text);
  std::string out;
  out.reserve(text.size() + 2);
  out += '"';
  for (const char c : text) {
    switch (c) {
    case '"':
      out += "\\\"";
      break;
    case '\\':
      out += "\\\\";
      break;
    case '\n':
      out += "\\n";
      break;
    case '\r':
      out += "\\r";
      break;
    case '\t':
      out += "\\t";
      break;
    case '\b':
      out += "\\b";
      break;
    case '\f':
      out += "\\f";
      break;
    default:
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
        appendEscape(out, static_cast<unsigned char>(c));
      else
        out += c;
    }
  }
  out += '"';
  return out;
}
