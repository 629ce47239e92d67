// The message: header block, fields, body copy and the body stream. (Its checksum: the
// kernels' tests in FastKernels, and every record a walk gives.)
#include "store/MailMsg.h"
#include "tests/store/AtEachWidth.h"
#include "tests/support/AgentSession.h"
#include "tests/support/Reference.h"
#include <memory>
#include <tuple>
#include <vector>

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
    return message.bodyLength
               ? std::string(reinterpret_cast<const char *>(message.body.get()), message.bodyLength)
               : std::string();
  }
};

// Each kind of line end counted on its own, any other byte setting both counts back: the
// reference, the kernel at each width and the message's body all split the bytes there.
TEST_F(MailMsgTest, HeaderBlockEndsAtTheFirstBlankLine) {
  const std::pair<std::string, uint32_t> cases[] = {
      {"X: 1\r\n\r\nBody", 8}, {"X: 1\n\nBody", 6}, {"X: 1\r\nY: 2", 10}, {"\n\nBody", 2},
      {"X\r\rBody", 3},        {"X\r\r\nBody", 4},  {"X\r\n\nBody", 4},   {"X\n\r\nBody", 4},
      {"\nBody\n\nrest", 7},   {"\r\nBody", 6},
  };
  for (const auto &[text, headerLength] : cases) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(text.data());
    const auto size = static_cast<uint32_t>(text.size());
    EXPECT_EQ(headerLength, referenceHeaderLength(bytes, size)) << text;
    atEachWidth(
        [&, want = headerLength] { EXPECT_EQ(want, CMailMsg().getHeaderLength(bytes, size)); });
    EXPECT_EQ(text.substr(headerLength), body(build(text))) << text;
  }
}

TEST_F(MailMsgTest, FieldsAreFoundAsWrittenOrNotAtAll) {
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
  // From the start, seek after seek (origin, offset, status, place after): origin 0 is the
  // start, 1 the place, 2 the last byte.
  const std::tuple<int32_t, int32_t, int32_t, uint32_t> seeks[] = {
      {2, 0, 0, 2},    {0, 3, -8, 2}, {0, -1, -8, 2}, {2, -1, 0, 1}, {2, 1, -8, 1},
      {2, -3, -8, 1},  {1, -1, 0, 0}, {1, -1, -8, 0}, // wraps round as unsigned: refused
      {3, 12345, 0, 0}};                              // an origin of no meaning moves nothing
  uint32_t position = 99, got = 99;
  for (const auto &[origin, offset, status, expected] : seeks) {
    EXPECT_EQ(status, message.seek(origin, offset)) << origin << " " << offset;
    message.tell(&position);
    EXPECT_EQ(expected, position) << origin << " " << offset;
  }
  char byte = 0;
  EXPECT_EQ(0, message.seek(2, 0));
  EXPECT_EQ(0, message.read(&byte, 1, &got));
  EXPECT_EQ('c', byte);
  EXPECT_EQ(-9, message.read(&byte, 1, &got));
  EXPECT_EQ(0u, got);
  for (int origin = 0; origin < 3; ++origin)
    EXPECT_EQ(-8, build("only a header").seek(origin, 0)) << "an empty body: " << origin;
  // Reads are short at the end, and a count of 0 delivers nothing.
  CMailMsg &longer = build("h\n\nabcdef");
  char buffer[16];
  EXPECT_EQ(0, longer.seek(0, 2));
  EXPECT_EQ(-9, longer.read(buffer, 0, &got));
  EXPECT_EQ(0, longer.read(buffer, 10, &got));
  EXPECT_EQ("cdef", std::string(buffer, got));
  EXPECT_EQ(-9, longer.read(buffer, 10, &got));
}
} // namespace
