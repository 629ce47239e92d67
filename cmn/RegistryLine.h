// RegistryData and ValueLineHead: the syntax of one line of a registry file, recognising a
// key line or a value line, and writing them. A line here is its content, without its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cmn {

// The first line of every file in the format.
inline constexpr std::string_view kRegistryHeader = "Windows Registry Editor Version 5.00";

struct RegistryData {
  enum class Type { String, Dword, Other };
  Type type = Type::Other; // Other: a value of a type this library does not read, or malformed
  std::string text;        // String: the bytes, unescaped
  uint32_t number = 0;     // Dword
};

// The key path of a `[key]` line, blanks after the `]` allowed; nothing for any other line.
std::optional<std::string_view> parseKeyLine(std::string_view line);

struct ValueLineHead {
  std::string name;     // unescaped
  size_t dataBegin = 0; // where the data starts in the line, just past the `=`
};
// The head of a line that starts with a quoted name directly followed by `=`; nothing for
// any other line.
std::optional<ValueLineHead> parseValueLineHead(std::string_view line);

// The data of a value line (all that follows the `=`), blanks at its end allowed: a quoted
// string, `dword:` and 1 to 8 hex digits, or Other for anything else.
RegistryData parseValueData(std::string_view data);

std::string formatKeyLine(std::string_view key);
// `"name"=`, the head of a value line.
std::string formatValueHead(std::string_view name);
// A quoted escaped string, or `dword:` and exactly 8 lower-case hex digits.
std::string formatValueData(const RegistryData &data);

} // namespace cmn
