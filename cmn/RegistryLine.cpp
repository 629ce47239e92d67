// The syntax of one line of a registry file.
#include "cmn/RegistryLine.h"

#include "platform/CString.h"

#include <cstdio>

namespace cmn {

namespace {

std::string_view trimTrailingBlanks(std::string_view text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
    text.remove_suffix(1);
  return text;
}

// Reads the quoted text that starts at `text[begin]` (a `"`). Only `\\` and `\"` are escapes;
// a backslash before anything else is an ordinary byte, as the registry editor reads it.
// Returns the unescaped text and sets `end` just past the closing quote; nothing when the
// line ends first.
std::optional<std::string> parseQuoted(std::string_view text, size_t begin, size_t &end) {
  std::string unescaped;
  for (size_t at = begin + 1; at < text.size(); ++at) {
    const char ch = text[at];
    if (ch == '"') {
      end = at + 1;
      return unescaped;
    }
    if (ch == '\\' && at + 1 < text.size() && (text[at + 1] == '\\' || text[at + 1] == '"'))
      ++at;
    unescaped += text[at];
  }
  return std::nullopt;
}

std::string quoted(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 2);
  out += '"';
  for (const char ch : text) {
    if (ch == '\\' || ch == '"')
      out += '\\';
    out += ch;
  }
  out += '"';
  return out;
}

int hexDigitValue(char ch) {
  if (ch >= '0' && ch <= '9')
    return ch - '0';
  const char lower = asciiToLower(ch);
  if (lower >= 'a' && lower <= 'f')
    return lower - 'a' + 10;
  return -1;
}

std::optional<uint32_t> parseDword(std::string_view digits) {
  if (digits.empty() || digits.size() > 8)
    return std::nullopt;
  uint32_t number = 0;
  for (const char ch : digits) {
    const int digit = hexDigitValue(ch);
    if (digit < 0)
      return std::nullopt;
    number = (number << 4) | static_cast<uint32_t>(digit);
  }
  return number;
}

} // namespace

std::optional<std::string_view> parseKeyLine(std::string_view line) {
  line = trimTrailingBlanks(line);
  if (line.size() < 2 || line.front() != '[' || line.back() != ']')
    return std::nullopt;
  return line.substr(1, line.size() - 2);
}

std::optional<ValueLineHead> parseValueLineHead(std::string_view line) {
  if (line.empty() || line.front() != '"')
    return std::nullopt;
  size_t end = 0;
  std::optional<std::string> name = parseQuoted(line, 0, end);
  if (!name || end >= line.size() || line[end] != '=')
    return std::nullopt;
  return ValueLineHead{std::move(*name), end + 1};
}

RegistryData parseValueData(std::string_view data) {
  static constexpr std::string_view kDwordPrefix = "dword:";
  data = trimTrailingBlanks(data);
  RegistryData parsed;
  if (!data.empty() && data.front() == '"') {
    size_t end = 0;
    std::optional<std::string> text = parseQuoted(data, 0, end);
    if (text && end == data.size()) {
      parsed.type = RegistryData::Type::String;
      parsed.text = std::move(*text);
    }
  } else if (data.size() > kDwordPrefix.size() &&
             asciiCompareNoCase(data.data(), kDwordPrefix.data(), kDwordPrefix.size()) == 0) {
    if (std::optional<uint32_t> number = parseDword(data.substr(kDwordPrefix.size()))) {
      parsed.type = RegistryData::Type::Dword;
      parsed.number = *number;
    }
  }
  return parsed;
}

std::string formatKeyLine(std::string_view key) {
  std::string line = "[";
  line += key;
  line += ']';
  return line;
}

std::string formatValueHead(std::string_view name) {
  return quoted(name) + "=";
}

std::string formatValueData(const RegistryData &data) {
  if (data.type == RegistryData::Type::String)
    return quoted(data.text);
  char digits[16];
  std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(data.number));
  return std::string("dword:") + digits;
}

} // namespace cmn
