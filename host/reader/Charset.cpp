// UTF-8 checks, Windows-1252 and the converters of iconv for every other charset.
#include "host/reader/Charset.h"

#include "host/reader/ReaderOptions.h"

#include <gmime/gmime.h>

#include <cerrno>
#include <cstdint>
#include <strings.h>

namespace {

// Windows-1252's 0x80 to 0x9F; its five holes are read as the C1 controls of Latin-1.
constexpr uint16_t kWindows1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The length of the valid UTF-8 sequence at `p`, or 0.
size_t sequenceLength(const unsigned char *p, const unsigned char *end) {
  const unsigned char lead = p[0];
  size_t length;
  uint32_t lowest;
  if (lead < 0x80)
    return 1;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
    lowest = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    lowest = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    lowest = 0x10000;
  } else {
    return 0;
  }
  if (static_cast<size_t>(end - p) < length)
    return 0;
  uint32_t c = lead & (0x7F >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((p[i] & 0xC0) != 0x80)
      return 0;
    c = (c << 6) | (p[i] & 0x3F);
  }
  if (c < lowest || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
    return 0;
  return length;
}

bool equalsNoCase(std::string_view text, const char *name) {
  return text.size() == std::char_traits<char>::length(name) &&
         strncasecmp(text.data(), name, text.size()) == 0;
}

bool startsWithNoCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() &&
         strncasecmp(text.data(), prefix.data(), prefix.size()) == 0;
}

bool asciiCompatible(std::string_view charset) {
  for (const char *escaped : {"utf-7", "utf-16", "utf-32", "ucs", "iso-2022", "hz"})
    if (startsWithNoCase(charset, escaped))
      return false;
  return true;
}

bool isAscii(std::string_view bytes) {
  for (const char c : bytes)
    if (static_cast<unsigned char>(c) >= 0x80)
      return false;
  return true;
}

// An iconv converter to UTF-8, closed with the object. GMime maps MIME charset names to the
// names iconv knows and keeps opened converters for reuse.
class ToUtf8 {
public:
  explicit ToUtf8(const std::string &charset)
      : cd_((readerOptions(), g_mime_iconv_open("UTF-8", charset.c_str()))) {}
  ~ToUtf8() {
    if (ok())
      g_mime_iconv_close(cd_);
  }
  ToUtf8(const ToUtf8 &) = delete;
  ToUtf8 &operator=(const ToUtf8 &) = delete;
  bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }

  void convert(std::string_view bytes, std::string &out) {
    char *in = const_cast<char *>(bytes.data());
    size_t inLeft = bytes.size();
    char buffer[4096];
    while (inLeft > 0) {
      char *to = buffer;
      size_t toLeft = sizeof buffer;
      const size_t result = iconv(cd_, &in, &inLeft, &to, &toLeft);
      const int error = result == static_cast<size_t>(-1) ? errno : 0;
      out.append(buffer, static_cast<size_t>(to - buffer));
      if (error == EILSEQ || error == EINVAL) {
        // A byte the charset does not allow, or a sequence cut at the end: one replacement
        // character for it, and on with the next byte.
        out += "\xEF\xBF\xBD";
        ++in;
        --inLeft;
        iconv(cd_, nullptr, nullptr, nullptr, nullptr);
      } else if (error != 0 && error != E2BIG) {
        break;
      }
    }
    char *to = buffer;
    size_t toLeft = sizeof buffer;
    iconv(cd_, nullptr, nullptr, &to, &toLeft);
    out.append(buffer, static_cast<size_t>(to - buffer));
  }

private:
  iconv_t cd_;
};

} // namespace

void blankControlCharacters(std::string &text) {
  for (char &c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
      c = ' ';
}

uint32_t windows1252CodePoint(unsigned char byte) {
  return byte >= 0x80 && byte < 0xA0 ? kWindows1252High[byte - 0x80] : byte;
}

size_t validUtf8Prefix(std::string_view bytes) {
  const auto *const begin = reinterpret_cast<const unsigned char *>(bytes.data());
  const auto *const end = begin + bytes.size();
  const unsigned char *p = begin;
  while (p < end) {
    // Eight ASCII bytes at a time: most mail text is ASCII.
    while (end - p >= 8) {
      uint64_t word;
      __builtin_memcpy(&word, p, 8);
      if (word & 0x8080808080808080ull)
        break;
      p += 8;
    }
    if (p == end)
      break;
    const size_t length = sequenceLength(p, end);
    if (length == 0)
      break;
    p += length;
  }
  return static_cast<size_t>(p - begin);
}

void appendUtf8OrWindows1252(std::string_view bytes, std::string &out) {
  while (!bytes.empty()) {
    const size_t valid = validUtf8Prefix(bytes);
    out.append(bytes.data(), valid);
    if (valid == bytes.size())
      return;
    appendUtf8(out, windows1252CodePoint(static_cast<unsigned char>(bytes[valid])));
    bytes.remove_prefix(valid + 1);
  }
}

void appendUtf8(std::string_view bytes, std::string_view charset, std::string &out) {
  if (charset.empty() || equalsNoCase(charset, "us-ascii") || equalsNoCase(charset, "utf-8") ||
      equalsNoCase(charset, "utf8") || equalsNoCase(charset, "ascii")) {
    appendUtf8OrWindows1252(bytes, out);
    return;
  }
  // ASCII reads the same in every charset but the few that encode with ASCII bytes.
  if (asciiCompatible(charset) && isAscii(bytes)) {
    out.append(bytes);
    return;
  }
  ToUtf8 converter{std::string(charset)};
  if (!converter.ok()) {
    appendUtf8OrWindows1252(bytes, out);
    return;
  }
  const size_t start = out.size();
  converter.convert(bytes, out);
  // A converter's output is UTF-8 by contract; a broken one must not spoil the text.
  const std::string_view written(out.data() + start, out.size() - start);
  if (validUtf8Prefix(written) != written.size()) {
    std::string checked;
    appendUtf8OrWindows1252(written, checked);
    out.resize(start);
    out += checked;
  }
}
