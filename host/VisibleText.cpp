// Control characters, C1 controls and stray bytes made visible.
#include "host/VisibleText.h"

#include "host/reader/Charset.h"

#include <cstdio>

std::string visibleText(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const size_t valid = validUtf8Prefix(text);
    for (size_t i = 0; i < valid; ++i) {
      const unsigned char c = static_cast<unsigned char>(text[i]);
      // NOLINTNEXTLINE(bugprone-branch-clone): kept whitespace is not escaped below
      if (c == '\n' || c == '\t' || (c == '\r' && i + 1 < valid && text[i + 1] == '\n')) {
        shown += static_cast<char>(c);
      } else if (c < 0x20 || c == 0x7F) {
        shown += '^';
        shown += static_cast<char>(c ^ 0x40);
      } else if (c == 0xC2 && i + 1 < valid && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(text[++i]));
        shown += escape; // a C1 control: CSI, U+009B, starts a sequence on some terminals
      } else {
        shown += static_cast<char>(c);
      }
    }
    if (valid == text.size())
      break;
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(text[valid]));
    shown += escape;
    text.remove_prefix(valid + 1);
  }
  return shown;
}
