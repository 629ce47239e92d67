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
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    // The C1 controls are valid JSON, but a terminal showing the line may obey them.
    if (c == '\xC2' && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      appendEscape(out, static_cast<unsigned char>(text[++i]));
      continue;
    }
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
