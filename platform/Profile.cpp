// GetPrivateProfileStringA: reads the INI file line by line for one section and key.
#include "Profile.h"

#include "CString.h"
#include "TextLines.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

namespace {

std::string trimmed(const std::string &text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos)
    return std::string();
  const size_t last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

bool sameName(const std::string &left, const char *right) {
  return left.size() == std::strlen(right) &&
         asciiCompareNoCase(left.c_str(), right, left.size()) == 0;
}

std::string unquoted(const std::string &value) {
  if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
      value.back() == value.front())
    return value.substr(1, value.size() - 2);
  return value;
}

std::optional<std::string> findValue(const char *fileName, const char *section, const char *key) {
  std::optional<std::string> value;
  bool inSection = false;
  forEachLine(fileName, [&](const std::string &line) {
    const std::string text = trimmed(line);
    if (!text.empty() && text.front() == '[') {
      // The first section of the name has ended without the key: only it counts.
      if (inSection)
        return false;
      const size_t close = text.find(']');
      inSection = sameName(
          trimmed(text.substr(1, close == std::string::npos ? std::string::npos : close - 1)),
          section);
      return true;
    }
    const size_t equals = text.find('=');
    if (inSection && equals != std::string::npos && text.front() != ';' &&
        sameName(trimmed(text.substr(0, equals)), key)) {
      value = unquoted(trimmed(text.substr(equals + 1)));
      return false;
    }
    return true;
  });
  return value;
}

} // namespace

DWORD GetPrivateProfileStringA(const char *section, const char *key, const char *defaultValue,
                               char *buffer, DWORD size, const char *fileName) {
  if (buffer == nullptr || size == 0)
    return 0;
  buffer[0] = '\0';
  if (section == nullptr || key == nullptr)
    return 0;
  const std::optional<std::string> found =
      fileName != nullptr ? findValue(fileName, section, key) : std::nullopt;
  const std::string value =
      found ? *found : std::string(defaultValue != nullptr ? defaultValue : "");
  const size_t count = std::min<size_t>(value.size(), size - 1);
  std::memcpy(buffer, value.data(), count);
  buffer[count] = '\0';
  return static_cast<DWORD>(count);
}
