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

#include <string>
#include <string_view>

namespace {

// Written here, not taken from the reader: a fault in the reader's own check must not hide
// the faults it lets through.
bool isUtf8(std::string_view text) {
  size_t at = 0;
  while (at < text.size()) {
    const unsigned char lead = static_cast<unsigned char>(text[at]);
    size_t length = 1;
    unsigned char low = 0x80, high = 0xBF; // the range of the first continuation byte
    if (lead < 0x80) {
      ++at;
      continue;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      low = lead == 0xE0 ? 0xA0 : 0x80; // no overlong forms
      high = lead == 0xED ? 0x9F : 0xBF; // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      low = lead == 0xF0 ? 0x90 : 0x80;
      high = lead == 0xF4 ? 0x8F : 0xBF; // nothing above U+10FFFF
    } else {
      return false;
    }
    if (text.size() - at < length)
      return false;
    const unsigned char second = static_cast<unsigned char>(text[at + 1]);
    if (second < low || second > high)
      return false;
    for (size_t i = 2; i < length; ++i)
      if ((static_cast<unsigned char>(text[at + i]) & 0xC0) != 0x80)
        return false;
    at += length;
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
