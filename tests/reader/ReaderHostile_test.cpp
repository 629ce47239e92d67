// Mail that is broken, or built to exhaust the reader: each message must be read to an end,
// give valid UTF-8 everywhere, and keep whatever text it still holds.
#include "host/reader/MailReader.h"
#include "tests/support/TestFiles.h"
#include <glib.h>
#include <gtest/gtest.h>
#include <string_view>
#include <tuple>

namespace {
constexpr unsigned kBound = 300; // seconds: a hang, not a slow sanitized build

// glib's check, not the reader's own, so that a fault in the latter cannot hide. It refuses
// NUL too, which none of these messages holds.
bool isUtf8(const std::string &text) {
  return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != 0;
}

// Valid UTF-8 everywhere, and no control character in a header field.
void expectReadable(const ReadMessage &message) {
  for (const std::string *field : {&message.subject, &message.from, &message.to, &message.cc,
                                   &message.text, &message.attachmentText})
    EXPECT_TRUE(isUtf8(*field)) << field->substr(0, 200);
  for (const std::string *field : {&message.subject, &message.from, &message.to, &message.cc})
    for (const char c : *field)
      EXPECT_FALSE(static_cast<unsigned char>(c) < 0x20 || c == 0x7F) << *field;
  for (const MailAttachment &attachment : message.attachments)
    EXPECT_TRUE(isUtf8(attachment.name) && isUtf8(attachment.type)) << attachment.name;
}

// A whole message split after its first blank line, as a mailbox frames it.
ReadMessage read(std::string_view whole) {
  const size_t blank = whole.find("\n\n");
  const size_t split = blank == std::string_view::npos ? whole.size() : blank + 2;
  Watchdog watchdog(kBound);
  ReadMessage message;
  readMessage(whole.substr(0, split), whole.substr(split), message);
  expectReadable(message);
  return message;
}

TEST(ReaderHostile, SamplesKeepTheTextTheyHold) {
  // Each sample and a text it keeps: in its text, or in its header fields when it has no body.
  const std::pair<const char *, const char *> samples[] = {
      {"unclosed-boundary.eml", "The last part never sees its boundary again."},
      {"unknown-charset.eml", "Caf\xC3\xA9 au lait"},
      {"truncated-base64.eml", "Decoded text survives the cut"},
      {"malformed-encoded-words.eml", "euro split across words"},
      {"no-boundary.eml", "Text of a multipart without a boundary."},
      // Not broken, but every uuencoded body opens with a line that is not data.
      {"uuencoded.eml", "Uuencoded text comes out whole."},
  };
  for (const auto &[file, kept] : samples) {
    SCOPED_TRACE(file);
    const ReadMessage message =
        read(readFile(std::string(TUK_SOURCE_DIR "/tests/reader/cases/") + file));
    const std::string all = message.subject + message.from + message.to + message.cc + message.text;
    EXPECT_NE(all.find(kept), std::string::npos) << all;
  }
  // The words around the malformed encoded words stay in the subject.
  const std::string subject =
      read(readFile(TUK_SOURCE_DIR "/tests/reader/cases/malformed-encoded-words.eml")).subject;
  EXPECT_TRUE(subject.find("plain") != std::string::npos &&
              subject.find("end") != std::string::npos)
      << subject;
}

TEST(ReaderHostile, DeepNestOfMultipartsKeepsItsInnermostText) {
  constexpr int kDepth = 10000;
  std::string whole = "From: a@example.com\n";
  for (int level = 0; level < kDepth; ++level)
    whole += "Content-Type: multipart/mixed; boundary=\"b" + std::to_string(level) + "\"\n\n--b" +
             std::to_string(level) + "\n";
  whole += "Content-Type: text/plain\n\nAt the bottom of the nest.\n";
  for (int level = kDepth - 1; level >= 0; --level)
    whole += "--b" + std::to_string(level) + "--\n";
  const ReadMessage message = read(whole);
  EXPECT_NE(message.text.find("At the bottom of the nest."), std::string::npos);
}

// One base64 line of 50 MB, with no line end to stop a reader that buffers lines.
TEST(ReaderHostile, FiftyMegabyteBase64LineIsDecodedWhole) {
  const std::string plain = repeated("Fifty megabytes of text on one line. ", 1100000);
  gchar *const encoded =
      g_base64_encode(reinterpret_cast<const guchar *>(plain.data()), plain.size());
  const std::string line(encoded);
  g_free(encoded);
  ASSERT_GE(line.size(), 50u << 20);
  const std::string mixed = "From: a@example.com\nContent-Type: multipart/mixed; boundary=b\n\n"
                            "--b\nContent-Type: text/plain\n\nBefore it.\n--b\n";
  const std::string text = "Content-Type: text/plain\nContent-Transfer-Encoding: base64\n\n";
  // What comes before the line and behind it, and whether that makes it an attachment.
  const std::tuple<std::string, std::string, bool> shapes[] = {
      {text, "", false},
      {mixed + text, "\n--b--\n", false},
      {mixed + "Content-Type: application/octet-stream; name=big.bin\n"
               "Content-Transfer-Encoding: base64\n\n",
       "\n--b--\n", true},
  };
  for (const auto &[head, tail, attached] : shapes) {
    SCOPED_TRACE(head);
    const ReadMessage message = read(std::string(head).append(line).append(tail));
    if (attached) {
      ASSERT_EQ(message.attachments.size(), 1u);
      EXPECT_EQ(message.attachments[0].size, plain.size());
      EXPECT_NE(message.text.find("Before it."), std::string::npos);
      EXPECT_LT(message.text.size(), 100u);
    } else {
      // No EXPECT_EQ: a failure must not print 40 MB.
      EXPECT_NE(message.text.find(plain), std::string::npos) << message.text.size();
    }
  }
}
} // namespace
