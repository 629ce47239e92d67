// A header block read into its fields, and header text decoded for a person.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct HeaderField {
  std::string_view name;
  std::string_view value; // as written: folded lines keep their line ends
};

// The fields of `block` in their order. A line that is neither a field nor the continuation
// of one is passed over; the block ends at its first empty line.
std::vector<HeaderField> headerFields(std::string_view block);

// The value of the first field named `name` (any case), or an empty view.
std::string_view fieldValue(const std::vector<HeaderField> &fields, std::string_view name);

// A value on one line: line ends and the blanks that fold it as one blank, the ends trimmed.
std::string unfoldedValue(std::string_view value);

// A value as a person reads it, in UTF-8: unfolded, RFC 2047 encoded words decoded (also the
// malformed ones mail programs write), 8-bit text read as UTF-8 or else Windows-1252, and
// control characters as blanks.
std::string decodedValue(std::string_view value);
