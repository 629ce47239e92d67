// RegistryText: finding a value in the text of a registry file, and setting one.
//
// The text is scanned line by line without building a model of it, so that a file of a
// million blank lines costs no more memory than its bytes.
#include "cmn/RegistryText.h"

#include "platform/CString.h"

namespace cmn {

namespace {

bool equalsNoCase(std::string_view left, std::string_view right) {
  if (left.size() != right.size())
    return false;
  for (size_t at = 0; at < left.size(); ++at) {
    if (asciiToLower(left[at]) != asciiToLower(right[at]))
      return false;
  }
  return true;
}

// A value of a type this library does not read continues on the next line when it ends with
// a backslash (the registry editor wraps hex data so).
bool endsWithBackslash(std::string_view line) {
  return !line.empty() && line.back() == '\\';
}

// Ends the text's last line, which has no line end yet. A carriage return that ends it is
// its content, not half a line end: it keeps a CR LF of its own, so that the line reads as it
// read before (a line of junk must not turn into a key or a value line).
void endLastLine(std::string &text, std::string_view lineEnd) {
  text += text.back() == '\r' ? std::string_view("\r\n") : lineEnd;
}

// Whether `text`, which ends with a line end, ends with an empty line.
bool endsWithEmptyLine(std::string_view text) {
  std::string_view before = text.substr(0, text.size() - 1);
  if (!before.empty() && before.back() == '\r')
    before.remove_suffix(1);
  return before.empty() || before.back() == '\n';
}

} // namespace

struct RegistryText::Location {
  // The last occurrence of the value, and where its data lies in the text (before the line end).
  bool valueFound = false;
  RegistryData value;
  size_t valueDataBegin = 0;
  size_t valueDataEnd = 0;
  // Just past the last line (line end included) that belongs to the last section of the key:
  // its key line, a value line or a continuation line. Comments and blank lines at the end of a
  // section often introduce the next one, so they do not count.
  std::optional<size_t> sectionEnd;
  // The text ends inside a wrapped value of that section: its last line ends in a backslash,
  // so a line added behind it would be read as the wrapped value's continuation.
  bool sectionEndContinues = false;
  // The line end of the first line: new lines follow the file's own convention.
  std::string_view lineEnd = "\n";
};

RegistryText::Location RegistryText::locate(std::string_view key, std::string_view name) const {
  Location found;
  bool inSectionOfKey = false;
  bool continuing = false;
  size_t next = 0;
  for (size_t begin = 0; begin < bytes_.size(); begin = next) {
    const size_t newline = bytes_.find('\n', begin);
    next = newline == std::string_view::npos ? bytes_.size() : newline + 1;
    size_t contentEnd = newline == std::string_view::npos ? bytes_.size() : newline;
    if (newline != std::string_view::npos && contentEnd > begin && bytes_[contentEnd - 1] == '\r')
      --contentEnd;
    if (begin == 0 && newline != std::string_view::npos && contentEnd != newline)
      found.lineEnd = "\r\n";
    const std::string_view line = bytes_.substr(begin, contentEnd - begin);

    if (continuing) {
      continuing = endsWithBackslash(line);
      if (inSectionOfKey)
        found.sectionEnd = next;
    } else if (const std::optional<std::string_view> sectionKey = parseKeyLine(line)) {
      inSectionOfKey = equalsNoCase(*sectionKey, key);
      if (inSectionOfKey)
        found.sectionEnd = next;
    } else if (const std::optional<ValueLineHead> head = parseValueLineHead(line)) {
      const bool wanted = inSectionOfKey && equalsNoCase(head->name, name);
      // The data is only worth parsing for the value asked for, or to learn whether a line
      // ending in a backslash wraps onto the next.
      if (wanted || endsWithBackslash(line)) {
        RegistryData data = parseValueData(line.substr(head->dataBegin));
        continuing = data.type == RegistryData::Type::Other && endsWithBackslash(line);
        if (wanted) {
          found.valueFound = true;
          found.value = std::move(data);
          found.valueDataBegin = begin + head->dataBegin;
          found.valueDataEnd = contentEnd;
        }
      }
      if (inSectionOfKey)
        found.sectionEnd = next;
    }
  }
  found.sectionEndContinues = continuing && found.sectionEnd == bytes_.size();
  return found;
}

std::optional<RegistryData> RegistryText::find(std::string_view key, std::string_view name) const {
  Location found = locate(key, name);
  if (!found.valueFound)
    return std::nullopt;
  return std::move(found.value);
}

std::string RegistryText::withValue(std::string_view key, std::string_view name,
                                    const RegistryData &data) const {
  const Location found = locate(key, name);
  std::string edited;
  edited.reserve(bytes_.size() + key.size() + name.size() + data.text.size() + 64);

  // A string or dword is replaced in place, after the `=`, so that the name keeps its spelling.
  // A value of another type stays: the new line goes after it in the last section of the key,
  // where an import lets it win.
  if (found.valueFound && found.value.type != RegistryData::Type::Other) {
    edited.append(bytes_.substr(0, found.valueDataBegin));
    edited += formatValueData(data);
    edited.append(bytes_.substr(found.valueDataEnd));
    return edited;
  }

  const std::string valueLine = formatValueHead(name) + formatValueData(data);
  if (found.sectionEnd) {
    edited.append(bytes_.substr(0, *found.sectionEnd));
    if (edited.back() != '\n')
      endLastLine(edited, found.lineEnd); // the section's last line was the file's last
    if (found.sectionEndContinues)
      edited += found.lineEnd; // an empty line ends the wrapped value
    edited += valueLine;
    edited += found.lineEnd;
    edited.append(bytes_.substr(*found.sectionEnd));
    return edited;
  }

  edited.append(bytes_);
  if (edited.empty()) {
    edited += kRegistryHeader;
    edited += found.lineEnd;
  } else if (edited.back() != '\n') {
    endLastLine(edited, found.lineEnd);
  }
  if (!endsWithEmptyLine(edited))
    edited += found.lineEnd;
  edited += formatKeyLine(key);
  edited += found.lineEnd;
  edited += valueLine;
  edited += found.lineEnd;
  return edited;
}

} // namespace cmn
