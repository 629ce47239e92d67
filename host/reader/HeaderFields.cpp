// Header fields: the split of a block, unfolding, and encoded words through GMime.
#include "host/reader/HeaderFields.h"

#include "host/reader/Charset.h"
#include "host/reader/ReaderOptions.h"

#include <gmime/gmime.h>

#include <memory>
#include <strings.h>

namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

// A field name: printable ASCII up to the colon, no blank inside.
size_t nameLength(std::string_view line) {
  for (size_t i = 0; i < line.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(line[i]);
    if (c == ':')
      return i;
    if (c <= ' ' || c >= 0x7F)
      break;
  }
  return 0;
}

std::string_view lineWithoutEnd(std::string_view line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
    line.remove_suffix(1);
  return line;
}

} // namespace

std::vector<HeaderField> headerFields(std::string_view block) {
  std::vector<HeaderField> fields;
  bool continuing = false;
  size_t position = 0;
  while (position < block.size()) {
    const size_t end = block.find('\n', position);
    const size_t next = end == std::string_view::npos ? block.size() : end + 1;
    const std::string_view line = block.substr(position, next - position);
    const std::string_view text = lineWithoutEnd(line);
    if (text.empty())
      break;
    if (isBlank(text.front())) {
      if (continuing) {
        HeaderField &field = fields.back();
        field.value =
            std::string_view(field.value.data(),
                             static_cast<size_t>(line.data() + text.size() - field.value.data()));
      }
    } else if (const size_t length = nameLength(text)) {
      fields.push_back({text.substr(0, length), text.substr(length + 1)});
      continuing = true;
    } else {
      continuing = false;
    }
    position = next;
  }
  return fields;
}

std::string_view fieldValue(const std::vector<HeaderField> &fields, std::string_view name) {
  for (const HeaderField &field : fields)
    if (field.name.size() == name.size() &&
        strncasecmp(field.name.data(), name.data(), name.size()) == 0)
      return field.value;
  return std::string_view();
}

std::string unfoldedValue(std::string_view value) {
  std::string line;
  line.reserve(value.size());
  bool blank = true; // drops the blanks at the start
  for (const char c : value) {
    const bool space = isBlank(c) || c == '\r' || c == '\n';
    if (space) {
      blank = true;
      continue;
    }
    if (blank && !line.empty())
      line += ' ';
    blank = false;
    line += c;
  }
  return line;
}

std::string decodedValue(std::string_view value) {
  const std::string line = unfoldedValue(value);
  std::string text;
  bool plain = line.find("=?") == std::string::npos;
  for (const char c : line)
    plain = plain && static_cast<unsigned char>(c) < 0x80;
  if (plain) {
    text = line;
  } else {
    const std::unique_ptr<char, decltype(&g_free)> decoded(
        g_mime_utils_header_decode_text(readerOptions(), line.c_str()), &g_free);
    appendUtf8OrWindows1252(decoded ? std::string_view(decoded.get()) : line, text);
  }
  blankControlCharacters(text);
  return text;
}
