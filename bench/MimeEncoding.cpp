// MIME's encodings of text, as mail programs write them.
#include "bench/MimeEncoding.h"

#include <cstdint>
#include <cstring>

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
const char kHex[] = "0123456789ABCDEF";

void appendEscape(std::string &out, unsigned char byte) {
  out += '=';
  out += kHex[byte >> 4];
  out += kHex[byte & 15];
}

unsigned char byteAt(const std::string &text, size_t at) {
  return static_cast<unsigned char>(text[at]);
}

// The length of the UTF-8 sequence that starts at `at`, cut short at the end of the text.
size_t sequenceLength(const std::string &text, size_t at) {
  const unsigned char lead = byteAt(text, at);
  const size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  return length < text.size() - at ? length : text.size() - at;
}

uint32_t codePointAt(const std::string &text, size_t at, size_t length) {
  uint32_t point = length == 1 ? byteAt(text, at) : byteAt(text, at) & (0x7F >> length);
  for (size_t i = 1; i < length; ++i)
    point = point << 6 | (byteAt(text, at + i) & 0x3F);
  return point;
}

// The characters beyond ISO-8859-1 that the generated text uses.
struct Substitute {
  uint32_t codePoint;
  char windows1252;
  const char *ascii;
};
const Substitute kSubstitutes[] = {
    {0x20AC, '\x80', "EUR"}, {0x201A, '\x82', ","}, {0x201E, '\x84', "\""}, {0x2026, '\x85', "..."},
    {0x0152, '\x8C', "OE"},  {0x2018, '\x91', "'"}, {0x2019, '\x92', "'"},  {0x201C, '\x93', "\""},
    {0x201D, '\x94', "\""},  {0x2013, '\x96', "-"}, {0x2014, '\x97', "--"}, {0x0153, '\x9C', "oe"},
};

bool alphanumeric(unsigned char c) {
  return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z');
}

// What an encoded word in a phrase may carry unescaped, the same set in every field.
bool plainInQ(unsigned char c) {
  return alphanumeric(c) || std::strchr("!*+-/", c) != nullptr;
}

size_t widthInQ(unsigned char c) {
  return c == ' ' || plainInQ(c) ? 1 : 3;
}

} // namespace

void encodeBase64(std::string &out, const std::string &bytes) {
  const size_t size = bytes.size();
  for (size_t i = 0; i < size; i += 3) {
    const uint32_t value = static_cast<uint32_t>(byteAt(bytes, i)) << 16 |
                           (i + 1 < size ? static_cast<uint32_t>(byteAt(bytes, i + 1)) << 8 : 0) |
                           (i + 2 < size ? byteAt(bytes, i + 2) : 0);
    out += kAlphabet[value >> 18 & 63];
    out += kAlphabet[value >> 12 & 63];
    out += i + 1 < size ? kAlphabet[value >> 6 & 63] : '=';
    out += i + 2 < size ? kAlphabet[value & 63] : '=';
  }
}

void encodeBase64Lines(std::string &out, const std::string &bytes, const std::string &eol) {
  for (size_t at = 0; at < bytes.size(); at += 57) {
    encodeBase64(out, bytes.substr(at, 57));
    out += eol;
  }
}

void encodeQuotedPrintableLine(std::string &out, const std::string &line, const std::string &eol) {
  size_t column = 0;
  for (size_t i = 0; i < line.size(); ++i) {
    const unsigned char c = byteAt(line, i);
    const bool last = i + 1 == line.size();
    const bool fromAtStart = column == 0 && c == 'F' && line.compare(i, 5, "From ") == 0;
    const bool plain =
        !fromAtStart && ((c >= 33 && c <= 126 && c != '=') || ((c == ' ' || c == '\t') && !last));
    const size_t width = plain ? 1 : 3;
    // A soft break keeps room for its '=' in the 76 characters.
    if (column + width > 75) {
      out += '=';
      out += eol;
      column = 0;
      --i; // the byte is looked at again at the new line's start
      continue;
    }
    if (plain)
      out += static_cast<char>(c);
    else
      appendEscape(out, c);
    column += width;
  }
  out += eol;
}

void encodeWords(std::string &out, const std::string &utf8, WordEncoding encoding,
                 const std::string &fold) {
  const bool base64 = encoding == WordEncoding::Utf8Base64;
  const bool latin1 = encoding == WordEncoding::Latin1Q;
  const std::string text = latin1 ? toSingleByte(utf8, false) : utf8;
  const char *prefix = base64 ? "=?UTF-8?B?" : latin1 ? "=?ISO-8859-1?Q?" : "=?utf-8?Q?";
  const size_t room = 75 - std::strlen(prefix) - 2;
  size_t at = 0;
  while (at < text.size()) {
    // As many whole characters as the word has room for.
    size_t end = at, width = 0;
    while (end < text.size()) {
      const size_t next = end + (latin1 ? 1 : sequenceLength(text, end));
      size_t nextWidth = width;
      if (base64)
        nextWidth = (next - at + 2) / 3 * 4;
      else
        for (size_t i = end; i < next; ++i)
          nextWidth += widthInQ(byteAt(text, i));
      if (nextWidth > room && end > at)
        break;
      end = next;
      width = nextWidth;
    }
    if (at > 0)
      out += fold;
    out += prefix;
    if (base64) {
      encodeBase64(out, text.substr(at, end - at));
    } else {
      for (size_t i = at; i < end; ++i) {
        const unsigned char c = byteAt(text, i);
        if (c == ' ')
          out += '_';
        else if (plainInQ(c))
          out += static_cast<char>(c);
        else
          appendEscape(out, c);
      }
    }
    out += "?=";
    at = end;
  }
}

void encodePercent(std::string &out, const std::string &utf8) {
  for (size_t i = 0; i < utf8.size(); ++i) {
    const unsigned char c = byteAt(utf8, i);
    if (alphanumeric(c) || std::strchr("!#$&+-.^_`|~", c) != nullptr) {
      out += static_cast<char>(c);
    } else {
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    }
  }
}

std::string toSingleByte(const std::string &utf8, bool windows1252) {
  std::string out;
  out.reserve(utf8.size());
  for (size_t at = 0; at < utf8.size();) {
    const size_t length = sequenceLength(utf8, at);
    const uint32_t point = codePointAt(utf8, at, length);
    at += length;
    if (point < 0x100) {
      out += static_cast<char>(point);
      continue;
    }
    const char *ascii = "?";
    for (const Substitute &substitute : kSubstitutes) {
      if (substitute.codePoint != point)
        continue;
      if (windows1252) {
        out += substitute.windows1252;
        ascii = nullptr;
      } else {
        ascii = substitute.ascii;
      }
      break;
    }
    if (ascii)
      out += ascii;
  }
  return out;
}

bool fitsLatin1(const std::string &utf8) {
  for (size_t at = 0; at < utf8.size();) {
    const size_t length = sequenceLength(utf8, at);
    if (codePointAt(utf8, at, length) >= 0x100)
      return false;
    at += length;
  }
  return true;
}
