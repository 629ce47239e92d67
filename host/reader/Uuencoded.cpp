// Finding uuencoded blocks in text, line by line.
#include "host/reader/Uuencoded.h"

#include "host/reader/Charset.h"

#include <string_view>

namespace {

std::string_view lineAt(const std::string &text, size_t start, size_t &next) {
  const size_t end = text.find('\n', start);
  next = end == std::string::npos ? text.size() : end + 1;
  std::string_view line(text.data() + start, next - start);
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
    line.remove_suffix(1);
  return line;
}

// "begin 644 name": the name, or empty when the line is no begin line.
std::string_view beginName(std::string_view line) {
  if (line.compare(0, 6, "begin ") != 0)
    return {};
  size_t at = 6;
  while (at < line.size() && line[at] >= '0' && line[at] <= '7')
    ++at;
  if (at < 9 || at > 10 || at >= line.size() || line[at] != ' ')
    return {};
  return line.substr(at + 1);
}

// The bytes a line of uuencode stands for, or -1 when it is none: its first character
// counts them, and four characters carry three.
int uuLineBytes(std::string_view line) {
  if (line.empty())
    return -1;
  const int count = (line[0] - ' ') & 0x3F;
  const size_t wanted = (static_cast<size_t>(count) + 2) / 3 * 4;
  if (line.size() - 1 < wanted || line.size() - 1 > wanted + 2)
    return -1; // some writers pad a line with a character or two
  for (const char c : line)
    if (c < ' ' || c > '`')
      return -1;
  return count;
}

} // namespace

void takeUuencodedFiles(std::string &text, size_t from, std::vector<MailAttachment> &attachments) {
  if (text.find("begin ", from) == std::string::npos)
    return;
  std::string kept;
  size_t start = from, copied = 0;
  while (start < text.size()) {
    size_t next = 0;
    const std::string_view name = beginName(lineAt(text, start, next));
    if (name.empty()) {
      start = next;
      continue;
    }
    uint64_t size = 0;
    size_t at = next;
    bool ended = false;
    while (at < text.size()) {
      size_t after = 0;
      const std::string_view line = lineAt(text, at, after);
      at = after;
      if (line == "end") {
        ended = true;
        break;
      }
      const int bytes = uuLineBytes(line);
      if (bytes < 0)
        break;
      size += static_cast<uint64_t>(bytes);
    }
    if (!ended) {
      start = next;
      continue;
    }
    MailAttachment file;
    appendUtf8OrWindows1252(name, file.name);
    blankControlCharacters(file.name);
    file.type = "application/octet-stream";
    file.size = size;
    attachments.push_back(std::move(file));
    kept.append(text, copied, start - copied);
    copied = start = at;
  }
  if (copied == 0)
    return; // nothing taken
  kept.append(text, copied, std::string::npos);
  text = std::move(kept);
}
