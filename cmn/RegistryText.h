// RegistryText: the text of a registry file in the registry editor's export format, read as
// an import of it would read it, and edited so that every byte not edited stays as it was.
//
// Understood lines: `[key]` opens the section of a key; `"name"="string"` and
// `"name"=dword:1a2b3c4d` are values of the section above them. Strings escape `\` and `"`
// with a backslash; a backslash before any other byte stands for itself. Every other line
// (the header, blank lines, comments, the default value `@=`, values of other types and the
// continuation lines of a value ending in `\`, malformed lines, junk) is kept as it is.
// Key paths and value names compare without regard to ASCII case. Where a key's section or a
// value occurs more than once, the last occurrence counts.
#pragma once

#include "cmn/RegistryLine.h"

#include <optional>
#include <string>
#include <string_view>

namespace cmn {

class RegistryText {
public:
  // Does not copy: `bytes` must outlive this object. Any bytes are accepted.
  explicit RegistryText(std::string_view bytes) : bytes_(bytes) {}

  // The last occurrence of value `name` under `key`, or nothing.
  std::optional<RegistryData> find(std::string_view key, std::string_view name) const;

  // The text with value `name` under `key` set to `data` (a String or a Dword); key, name and
  // string must hold no line break. The last occurrence of the value is replaced when it is a
  // string or a dword. Otherwise a new value line goes at the end of the last section of the
  // key, or a new section at the end of the text. An empty text gets the format's header.
  std::string withValue(std::string_view key, std::string_view name,
                        const RegistryData &data) const;

private:
  struct Location;
  Location locate(std::string_view key, std::string_view name) const;

  std::string_view bytes_;
};

} // namespace cmn
