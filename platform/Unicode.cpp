// UTF-16 and UTF-8, the platform's code page, in both directions with the Win32 sizing rules.
#include "Unicode.h"

#include "Files.h"

#include <string>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isOurCodePage(UINT codePage) {
  return codePage == CP_ACP || codePage == CP_UTF8;
}

} // namespace

void appendUtf8(std::string &out, char32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

namespace {

std::string utf16ToUtf8(const WCHAR *wide, size_t length) {
  std::string out;
  for (size_t i = 0; i < length; ++i) {
    const char32_t unit = wide[i];
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < length && wide[i + 1] >= 0xDC00 &&
        wide[i + 1] <= 0xDFFF) {
      appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (wide[i + 1] - 0xDC00));
      ++i;
    } else if (unit >= 0xD800 && unit <= 0xDFFF) {
      appendUtf8(out, kReplacement);
    } else {
      appendUtf8(out, unit);
    }
  }
  return out;
}

// The code point of the UTF-8 sequence at `pos`, moving `pos` past it; false for bytes that
// are no well-formed sequence (overlong forms, surrogates and values past U+10FFFF included),
// with `pos` moved past the first byte.
bool decodeUtf8(const unsigned char *bytes, size_t length, size_t &pos, char32_t &code) {
  const unsigned char lead = bytes[pos++];
  if (lead < 0x80) {
    code = lead;
    return true;
  }
  int more;
  char32_t minimum;
  if (lead >= 0xC2 && lead <= 0xDF) {
    more = 1;
    minimum = 0x80;
    code = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    more = 2;
    minimum = 0x800;
    code = lead & 0x0F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    more = 3;
    minimum = 0x10000;
    code = lead & 0x07;
  } else {
    return false;
  }
  if (pos + static_cast<size_t>(more) > length)
    return false;
  for (int i = 0; i < more; ++i) {
    if ((bytes[pos + static_cast<size_t>(i)] & 0xC0) != 0x80)
      return false;
    code = (code << 6) | (bytes[pos + static_cast<size_t>(i)] & 0x3F);
  }
  if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
    return false;
  pos += static_cast<size_t>(more);
  return true;
}

// Copies `units` into the caller's buffer by the sizing rules of both calls.
template <class Unit>
int deliver(const std::basic_string<Unit> &units, Unit *buffer, int bufferMax) {
  if (bufferMax == 0)
    return static_cast<int>(units.size());
  if (units.size() > static_cast<size_t>(bufferMax)) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  units.copy(buffer, units.size());
  return static_cast<int>(units.size());
}

template <class Unit> size_t lengthWithZero(const Unit *text) {
  size_t length = 0;
  while (text[length] != 0)
    ++length;
  return length + 1;
}

} // namespace

int WideCharToMultiByte(UINT codePage, DWORD, const WCHAR *wide, int length, char *bytes,
                        int bytesMax, const char *, BOOL *) {
  if (!isOurCodePage(codePage) || wide == nullptr || length < -1 || bytesMax < 0 ||
      (bytesMax > 0 && bytes == nullptr)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const size_t count = length == -1 ? lengthWithZero(wide) : static_cast<size_t>(length);
  return deliver(utf16ToUtf8(wide, count), bytes, bytesMax);
}

int MultiByteToWideChar(UINT codePage, DWORD flags, const char *bytes, int length, WCHAR *wide,
                        int wideMax) {
  if (!isOurCodePage(codePage) || bytes == nullptr || length < -1 || wideMax < 0 ||
      (wideMax > 0 && wide == nullptr)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const size_t count = length == -1 ? lengthWithZero(bytes) : static_cast<size_t>(length);
  const auto *input = reinterpret_cast<const unsigned char *>(bytes);
  std::u16string units;
  for (size_t pos = 0; pos < count;) {
    char32_t code = 0;
    if (!decodeUtf8(input, count, pos, code)) {
      if (flags & MB_ERR_INVALID_CHARS) {
        SetLastError(ERROR_NO_UNICODE_TRANSLATION);
        return 0;
      }
      code = kReplacement;
    }
    if (code >= 0x10000) {
      units += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
      units += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      units += static_cast<char16_t>(code);
    }
  }
  return deliver(units, wide, wideMax);
}
