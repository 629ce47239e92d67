// The message reader over arbitrary bytes: whatever the header block and body hold, every
// string it gives a host is valid UTF-8, and the header fields and attachment names carry no
// control characters that could break a host's one-line display.
//
// The input splits after its first blank line, as a mailbox frames a message; without one, it
// is all header block and the body is empty. The whole input also goes to the HTML reader as
// a page, since a message reaches it only through a text/html part.
#include "fuzz/FuzzSupport.h"
#include "host/reader/Charset.h"
#include "host/reader/HtmlText.h"
#include "host/reader/MailReader.h"
#include <algorithm>
#include <glib.h>
#include <string>
#include <string_view>

namespace {
// GLib's check, not the reader's own: a fault in the reader's check must not hide the faults it
// lets through. GLib refuses a zero byte, which UTF-8 allows: each run between them is checked.
bool isUtf8(std::string_view text) {
  for (size_t at = 0; at <= text.size();) {
    const size_t zero = std::min(text.find('\0', at), text.size());
    if (!g_utf8_validate(text.data() + at, static_cast<gssize>(zero - at), nullptr))
      return false;
    at = zero + 1;
  }
  return true;
}

bool hasAsciiControl(std::string_view text) {
  for (const char c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
      return true;
  return false;
}

size_t bodyStart(std::string_view input) {
  const size_t lf = input.find("\n\n");
  const size_t crlf = input.find("\r\n\r\n");
  if (lf == std::string_view::npos && crlf == std::string_view::npos)
    return input.size();
  return lf < crlf ? lf + 2 : crlf + 4;
}
} // namespace

extern "C" int FUZZ_ENTRY(const uint8_t *data, size_t size) {
  const std::string_view input(reinterpret_cast<const char *>(data), size);
  const size_t split = bodyStart(input);
  ReadMessage message;
  readMessage(input.substr(0, split), input.substr(split), message);
  for (const std::string *field : {&message.subject, &message.from, &message.to, &message.cc}) {
    FUZZ_CHECK(isUtf8(*field));
    FUZZ_CHECK(!hasAsciiControl(*field));
  }
  FUZZ_CHECK(isUtf8(message.text));
  FUZZ_CHECK(isUtf8(message.attachmentText));
  for (const MailAttachment &attachment : message.attachments) {
    FUZZ_CHECK(isUtf8(attachment.name));
    FUZZ_CHECK(!hasAsciiControl(attachment.name));
    FUZZ_CHECK(isUtf8(attachment.type));
  }
  std::string page, text;
  appendUtf8OrWindows1252(input, page);
  appendHtmlText(page, text);
  FUZZ_CHECK(isUtf8(text));
  return 0;
}
