// The reader's pieces where a mistake would cost a person their words: charsets, header
// decoding, dates, and which parts of a MIME tree are text.
#include "host/reader/Charset.h"
#include "host/reader/HeaderFields.h"
#include "host/reader/MailDates.h"
#include "host/reader/MailReader.h"
#include <ctime>
#include <gtest/gtest.h>
#include <tuple>

namespace {
TEST(CharsetTest, EveryInputBecomesValidUtf8) {
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"M\xfcller", "", "Müller"},                       // undeclared: Windows-1252
      {"M\xc3\xbcller", "", "Müller"},                   // undeclared but valid UTF-8
      {"\x80 \x93quoted\x94", "us-ascii", "€ “quoted”"}, // mislabelled 8-bit
      {"M\xfcller", "ISO-8859-1", "Müller"},
      {"M\xfcller", "latin1", "Müller"},
      {"\xa4", "iso-8859-15", "€"},
      {"\xcf\xf0\xe8\xe2\xe5\xf2", "windows-1251", "Привет"},
      {"\x93\xfa\x96\x7b", "shift_jis", "日本"},
      {"M\xfcller", "x-no-such-charset", "Müller"}, // unknown: as undeclared
      {"ok \xff\xfe", "utf-8", "ok ÿþ"},            // bytes outside UTF-8
      {"a\xe4", "euc-kr", "a\xEF\xBF\xBD"},         // a cut sequence: U+FFFD
  };
  for (const auto &[bytes, charset, utf8] : cases) {
    std::string out;
    appendUtf8(bytes, charset, out);
    EXPECT_EQ(out, utf8) << charset;
    EXPECT_EQ(validUtf8Prefix(out), out.size());
  }
  // Overlong forms and surrogates are no UTF-8.
  for (const std::string bad : {"\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82"})
    EXPECT_EQ(validUtf8Prefix("x" + bad), 1u);
}

TEST(HeaderFieldsTest, FoldedFieldsAndEncodedWordsAsAPersonReadsThem) {
  const std::string block = "Subject: =?UTF-8?B?w5xiZXJ3ZWlz?=\r\n =?UTF-8?B?dW5n?= done\r\n"
                            "X-Junk line without a colon\r\n"
                            "from: =?iso-8859-1?q?J=F6rg?= <j@x.org>\r\n"
                            "To: a@x.org,\r\n\tb@x.org\r\n\r\nSubject: in the body\r\n";
  const std::vector<HeaderField> fields = headerFields(block);
  ASSERT_EQ(fields.size(), 3u);
  EXPECT_EQ(decodedValue(fieldValue(fields, "subject")), "Überweisung done");
  EXPECT_EQ(decodedValue(fieldValue(fields, "From")), "Jörg <j@x.org>");
  EXPECT_EQ(decodedValue(fieldValue(fields, "To")), "a@x.org, b@x.org");
  // What mail programs get wrong: no blank between words, an unknown charset, raw 8-bit,
  // an escape sequence.
  EXPECT_EQ(decodedValue("=?utf-8?q?caf=C3=A9?=ol\xe9 \x1b[31mred"), "caféolé  [31mred");
  EXPECT_EQ(decodedValue("=?x-unknown?B?w5w=?= ok"), "Ü ok");
}

TEST(MailDatesTest, HeaderDatesInUtcAndDelimiterLinesInLocalTime) {
  const std::pair<const char *, int64_t> dates[] = {
      {"Thu, 15 Jan 1998 10:30:45 -0500", 884878245},
      {"15 Jan 1998 15:30:45 GMT", 884878245},
      {"Thu, 15 Jan 98 10:30:45 EST", 884878245}, // two-digit year, named zone
      {"Thursday, 15-Jan-1998 15:30:45 +0000", 884878245},
  };
  for (const auto &[text, expected] : dates) {
    int64_t utc = 0;
    EXPECT_TRUE(parseHeaderDate(text, utc)) << text;
    EXPECT_EQ(expected, utc) << text;
  }
  int64_t utc = 0;
  for (const char *none : {"", "soon", "Thu, 15 Xyz 1998 10:30:45"})
    EXPECT_FALSE(parseHeaderDate(none, utc)) << none;
  struct tm local = {};
  local.tm_year = 98, local.tm_mday = 15, local.tm_hour = 10, local.tm_min = 30, local.tm_sec = 45,
  local.tm_isdst = -1;
  const int64_t expected = mktime(&local);
  for (const char *line : {" Thu Jan 15 10:30:45 1998\r\n", "From - Thu Jan 15 10:30:45 1998"}) {
    ASSERT_TRUE(parseDelimiterDate(line, utc)) << line;
    EXPECT_EQ(utc, expected);
  }
  EXPECT_FALSE(parseDelimiterDate("From - x y 1 00:00:00 1998", utc));
}

TEST(MailReaderTest, TextOfTheRightPartsAndAttachmentsByName) {
  const std::string header = "Subject: s\r\nContent-Type: multipart/mixed; boundary=o\r\n\r\n";
  const std::string body =
      "--o\r\nContent-Type: multipart/alternative; boundary=a\r\n\r\n"
      "--a\r\nContent-Type: text/html\r\n\r\n<p>html twin</p>\r\n"
      "--a\r\nContent-Type: text/plain\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n"
      "plain tw=\r\nin\r\n--a--\r\n"
      "--o\r\nContent-Type: text/plain; name=\"notes.txt\"\r\nContent-Disposition: attachment\r\n"
      "\r\nattached words\r\n"
      "--o\r\nContent-Type: image/png\r\nContent-Transfer-Encoding: base64\r\n"
      "Content-Disposition: inline; filename=\"=?UTF-8?Q?B=C3=A4r.png?=\"\r\n\r\niVBORw0KGgo=\r\n"
      "--o--\r\n";
  ReadMessage message;
  readMessage(header, body, message);
  EXPECT_TRUE(message.decoded);
  EXPECT_EQ(message.text, "plain twin");
  EXPECT_EQ(message.attachmentText, "attached words");
  ASSERT_EQ(message.attachments.size(), 2u);
  EXPECT_EQ(message.attachments[0].name, "notes.txt");
  EXPECT_EQ(message.attachments[1].name, "Bär.png");
  EXPECT_EQ(message.attachments[1].type, "image/png");
  EXPECT_EQ(message.attachments[1].size, 8u);
  // Uuencoded files in plain text are attachments too: "Cat" uuencoded, then a block without
  // its end line, which stays text.
  ReadMessage uu;
  readMessage("Subject: uu\n\n",
              "See the file.\nbegin 644 cat.txt\n#0V%T\n`\nend\nBye.\n"
              "begin 600 half.bin\n#0V%T\n",
              uu);
  EXPECT_EQ(uu.text, "See the file.\nBye.\nbegin 600 half.bin\n#0V%T\n");
  ASSERT_EQ(uu.attachments.size(), 1u);
  EXPECT_EQ(uu.attachments[0].name, "cat.txt");
  EXPECT_EQ(uu.attachments[0].size, 3u);
}
} // namespace
