// WinHelpA over the plain-text help file: finds the topic of a control and shows it.
#include "Help.h"

#include "TextLines.h"
#include "User.h"

#include <cctype>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct HelpTopic {
  std::string title;
  std::string text;
};

// "@<id> <title>": true with the id and title for a line that starts a topic.
bool topicLine(const std::string &line, unsigned long &id, std::string &title) {
  if (line.size() < 2 || line[0] != '@' || !std::isdigit(static_cast<unsigned char>(line[1])))
    return false;
  char *end = nullptr;
  id = std::strtoul(line.c_str() + 1, &end, 10);
  title = end;
  const size_t first = title.find_first_not_of(" \t");
  title = first == std::string::npos ? std::string() : title.substr(first);
  return true;
}

bool isBlank(const std::string &line) {
  return line.find_first_not_of(" \t") == std::string::npos;
}

std::string joinTrimmed(const std::vector<std::string> &lines) {
  size_t first = 0, last = lines.size();
  while (first < last && isBlank(lines[first]))
    ++first;
  while (last > first && isBlank(lines[last - 1]))
    --last;
  std::string text;
  for (size_t i = first; i < last; ++i) {
    if (i > first)
      text += '\n';
    text += lines[i];
  }
  return text;
}

// The topic of `contextId` in the file; false when the file or the topic is missing.
bool readTopic(const char *helpFile, unsigned long contextId, HelpTopic &topic) {
  bool inTopic = false;
  std::vector<std::string> lines;
  forEachLine(helpFile, [&](const std::string &line) {
    unsigned long id = 0;
    std::string title;
    if (!topicLine(line, id, title)) {
      if (inTopic)
        lines.push_back(line);
      return true;
    }
    if (inTopic)
      return false; // the next topic: this one is whole
    inTopic = id == contextId;
    if (inTopic)
      topic.title = title;
    return true;
  });
  if (!inTopic)
    return false;
  topic.text = joinTrimmed(lines);
  return true;
}

// The context id paired with `controlId`, or 0.
uint32_t contextOf(const uint32_t *pairs, int controlId) {
  for (; pairs[0] != 0 || pairs[1] != 0; pairs += 2) {
    if (pairs[0] == static_cast<uint32_t>(controlId))
      return pairs[1];
  }
  return 0;
}

} // namespace

BOOL WinHelpA(HWND window, const char *helpFile, UINT command, ULONG_PTR data) {
  if (command != HELP_WM_HELP || helpFile == nullptr || data == 0 || !IsWindow(window))
    return FALSE;
  const uint32_t contextId =
      contextOf(reinterpret_cast<const uint32_t *>(data), GetDlgCtrlID(window));
  HelpTopic topic;
  if (contextId == 0 || !readTopic(helpFile, contextId, topic))
    return FALSE;
  TukUserEvent event{};
  event.kind = TUK_USER_HELP;
  event.window = reinterpret_cast<TukWindow>(window);
  event.text = topic.text.c_str();
  event.caption = topic.title.c_str();
  event.flags = contextId;
  bool answered = false;
  askUser(event, answered);
  return TRUE;
}
