// JSON string escaping over bytes of unknown encoding.
#include "host/Json.h"

#include <cstdint>
#include <cstdio>

namespace {

// The length of the valid UTF-8 sequence at `p` (1 to 4), or 0 when there is none.
size_t utf8SequenceLength(const unsigned char *p, size_t available) {
  const unsigned char lead = p[0];
  size_t length = 0;
  uint32_t smallest = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
    smallest = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    smallest = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    smallest = 0x10000;
  } else {
    return 0;
  }
  if (available < length)
    return 0;
  uint32_t code = lead & (0x7F >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((p[i] & 0xC0) != 0x80)
      return 0;
    code = code << 6 | (p[i] & 0x3F);
  }
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return code >= smallest && code <= 0x10FFFF && !surrogate ? length : 0;
}

void appendEscape(std::string &out, unsigned value) {
  char escape[8];
  std::snprintf(escape, sizeof escape, "\\u%04x", value);
  out += escape;
}

} // namespace

std::string jsonString(const std::string &bytes) {
  std::string out;
  out.reserve(bytes.size() + 2);
  out += '"';
  const auto *p = reinterpret_cast<const unsigned char *>(bytes.data());
  const size_t size = bytes.size();
  for (size_t i = 0; i < size;) {
    const unsigned char c = p[i];
    if (c < 0x80) {
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
        if (c < 0x20 || c == 0x7F)
          appendEscape(out, c);
        else
          out += static_cast<char>(c);
      }
      ++i;
      continue;
    }
    const size_t length = utf8SequenceLength(p + i, size - i);
    if (length == 0) {
      appendEscape(out, c);
      ++i;
    } else {
      out.append(bytes, i, length);
      i += length;
    }
  }
  out += '"';
  return out;
}
