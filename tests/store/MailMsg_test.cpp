// The message: checksum, header block, fields, body copy and the body stream.
#include "store/MailMsg.h"

#include "tests/support/AgentSession.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>
#include <memory>

namespace {

class MailMsgTest : public ::testing::Test {
protected:
  // The header names come from the string table, which a live agent has loaded.
  AgentSession session;

  // The fixture keeps every message it built until the test ends.
  CMailMsg &build(const std::string &bytes) {
    built_.push_back(std::make_unique<CMailMsg>());
    CMailMsg &message = *built_.back();
    EXPECT_EQ(0, message.init(reinterpret_cast<const unsigned char *>(bytes.data()),
                              static_cast<uint32_t>(bytes.size()), "/mail/In.mbx"));
    return message;
  }
  std::vector<std::unique_ptr<CMailMsg>> built_;

  static std::string body(const CMailMsg &message) {
    return message.bodyLength ? std::string(reinterpret_cast<const char *>(message.body.get()),
                                            message.bodyLength)
                              : std::string();
  }
};

// The kernels agree with a byte-at-a-time reference (FastKernels); these values pin the
// reference itself.
TEST_F(MailMsgTest, ChecksumHasItsDocumentedValues) {
  EXPECT_EQ(0x04030404u, build(std::string("\x01\x02\x03\x04\x05\x06", 6)).checksum);
  const CMailMsg &message = build("abcd");
  EXPECT_EQ(0x64636261u, message.checksum);
  EXPECT_EQ(1, message.verifyChecksum(0x64636261u));
  EXPECT_EQ(0, message.verifyChecksum(0x64636260u));
}

TEST_F(MailMsgTest, HeaderBlockEndsAtTheFirstBlankLine) {
  struct Case {
    const char *text;
    uint32_t headerLength;
  } cases[] = {
      {"X: 1\r\n\r\nBody", 8}, {"X: 1\n\nBody", 6},   {"X: 1\r\nY: 2", 10},
      {"\n\nBody", 2},         {"X\r\rBody", 3},      {"X\r\r\nBody", 4},
      {"X\r\n\nBody", 4},      {"X\n\r\nBody", 4},    {"\nBody\n\nrest", 7},
      {"\r\nBody", 6},
  };
  for (const Case &c : cases) {
    const CMailMsg &message = build(c.text);
    const std::string text = c.text;
    EXPECT_EQ(text.size() - c.headerLength, message.bodyLength) << text;
    EXPECT_EQ(text.substr(c.headerLength), body(message)) << text;
  }
}

TEST_F(MailMsgTest, EmptyRangeGivesAnEmptyMessage) {
  const CMailMsg &message = build("");
  EXPECT_EQ(0u, message.checksum);
  EXPECT_EQ(0u, message.bodyLength);
  EXPECT_EQ(nullptr, message.body.get());
  EXPECT_TRUE(message.subject.IsEmpty() && message.to.IsEmpty() && message.date.IsEmpty());
  EXPECT_EQ("/mail/In.mbx", std::string(message.mailbox));
}

TEST_F(MailMsgTest, FieldsAreFoundAsWritten) {
  EXPECT_EQ("Hi", std::string(build("x\r\nSubject: Hi\r\n\r\n").subject));
  EXPECT_EQ("Hi", std::string(build("x\r\nSUBJECT: Hi\r\n\r\n").subject));
  // The byte after the colon is skipped, whatever it is.
  EXPECT_EQ("i", std::string(build("x\nSubject:Hi\n\n").subject));
  // Blanks are kept at both ends beyond the one skipped byte.
  EXPECT_EQ(" Hi  ", std::string(build("x\nSubject:  Hi  \n\n").subject));
  // A folded header keeps its first physical line.
  EXPECT_EQ("one", std::string(build("x\r\nSubject: one\r\n two\r\n\r\n").subject));
  EXPECT_EQ("a@x", std::string(build("x\nTo: a@x\nTo: b@x\n\n").to));
  EXPECT_EQ("Ann", std::string(build("x\nReply-To: Bob\nFrom: Ann\n\n").from));
  const CMailMsg &all = build("x\nDate: Thu, 15 Jan 1998\nCc: c@x\nFrom: f@x\nTo: t@x\n\nbody");
  EXPECT_EQ("Thu, 15 Jan 1998", std::string(all.date));
  EXPECT_EQ("c@x", std::string(all.cc));
}

TEST_F(MailMsgTest, FieldsThatCannotMatchStayEmpty) {
  // With CR alone as the line end no name has its line feed in front.
  const CMailMsg &crOnly = build("X: 1\rSubject: Hi\r\rBody");
  EXPECT_TRUE(crOnly.subject.IsEmpty());
  EXPECT_EQ("Body", body(crOnly));
  // The first line of the range has no line feed in front of it.
  EXPECT_TRUE(build("Subject: Hi\n\n").subject.IsEmpty());
  // A field behind the blank line is body.
  EXPECT_TRUE(build("x\n\nSubject: Hi\n").subject.IsEmpty());
  // A name that ends the header block leaves nothing to extract.
  EXPECT_TRUE(build("x\nSubject:").subject.IsEmpty());
}

TEST_F(MailMsgTest, SeekAndReadFollowTheirTables) {
  CMailMsg &message = build("h\n\nabc");
  ASSERT_EQ(3u, message.bodyLength);
  char byte = 0;
  uint32_t got = 99, position = 99;
  EXPECT_EQ(0, message.seek(2, 0));
  message.tell(&position);
  EXPECT_EQ(2u, position);
  EXPECT_EQ(0, message.read(&byte, 1, &got));
  EXPECT_EQ('c', byte);
  EXPECT_EQ(-9, message.read(&byte, 1, &got));
  EXPECT_EQ(0u, got);
  EXPECT_EQ(-8, message.seek(0, 3));
  EXPECT_EQ(-8, message.seek(0, -1));
  EXPECT_EQ(0, message.seek(2, -1));
  message.tell(&position);
  EXPECT_EQ(1u, position);
  EXPECT_EQ(-8, message.seek(2, 1));
  EXPECT_EQ(-8, message.seek(2, -3));
  EXPECT_EQ(0, message.seek(1, -1));
  message.tell(&position);
  EXPECT_EQ(0u, position);
  EXPECT_EQ(-8, message.seek(1, -1));  // wraps round as unsigned: refused
  EXPECT_EQ(0, message.seek(3, 12345));
  message.tell(&position);
  EXPECT_EQ(0u, position);
  for (int origin = 0; origin < 3; ++origin)
    EXPECT_EQ(-8, build("only a header").seek(origin, 0)) << "an empty body: " << origin;
}

TEST_F(MailMsgTest, ReadsAreShortAtTheEndAndEmptyForZero) {
  CMailMsg &message = build("h\n\nabcdef");
  char buffer[16];
  uint32_t got = 0;
  EXPECT_EQ(0, message.seek(0, 2));
  EXPECT_EQ(-9, message.read(buffer, 0, &got));  // a count of 0 delivers nothing
  EXPECT_EQ(0, message.read(buffer, 10, &got));
  EXPECT_EQ(4u, got);
  EXPECT_EQ("cdef", std::string(buffer, got));
  EXPECT_EQ(-9, message.read(buffer, 10, &got));
}

} // namespace
