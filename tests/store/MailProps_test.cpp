// The property block of a message and the table of property names.
#include "store/MailMsg.h"
#include "store/MailProps.h"
#include "tests/support/AgentSession.h"
#include <cstring>
#include <gtest/gtest.h>

namespace {
// The block as a host reads it: little-endian words aligned on 4 from the start, strings as
// a count with the terminator, the bytes and the terminator.
struct ExpectedBlock {
  ExpectedBlock &word(uint32_t value) {
    bytes.resize((bytes.size() + 3) & ~size_t{3}); // zeros up to the next multiple of 4
    for (int i = 0; i < 4; ++i)
      bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    return *this;
  }
  ExpectedBlock &text(const std::string &value) {
    word(static_cast<uint32_t>(value.size() + 1));
    bytes.insert(bytes.end(), value.c_str(), value.c_str() + value.size() + 1);
    return *this;
  }
  std::vector<unsigned char> bytes;
};

std::vector<unsigned char> blockFor(const std::string &subject, const std::string &location,
                                    const std::string &to, const std::string &from,
                                    const std::string &cc) {
  ExpectedBlock block;
  block.word(7);
  block.text("subject").text(subject).word(1);
  block.text("title").text(subject).word(2);
  block.text("location").text(location).word(2);
  block.text("to").text(to).word(1);
  block.text("from").text(from).word(1);
  block.text("cc").text(cc).word(1);
  block.text("author").text(from).word(1);
  return block.bytes;
}

class MailPropsTest : public ::testing::Test {
protected:
  std::vector<unsigned char> properties(const std::string &text, const std::string &mailbox) {
    CMailMsg message;
    EXPECT_EQ(0, message.init(reinterpret_cast<const unsigned char *>(text.data()),
                              static_cast<uint32_t>(text.size()), mailbox.c_str()));
    uint32_t used = 0, count = 99;
    EXPECT_EQ(-11, message.getProperties(nullptr, 0, &used, &count));
    EXPECT_EQ(99u, count);
    std::vector<unsigned char> block(used + 8, 0xEE);
    // One byte less fails with the same size; exactly the size succeeds.
    uint32_t usedShort = 0;
    EXPECT_EQ(-11, message.getProperties(block.data(), used - 1, &usedShort, &count));
    EXPECT_EQ(used, usedShort);
    EXPECT_EQ(0xEE, block[used - 1]) << "nothing past the buffer";
    EXPECT_EQ(0, message.getProperties(block.data(), used, &used, &count));
    EXPECT_EQ(7u, count);
    EXPECT_EQ(0xEE, block[used]);
    block.resize(used);
    return block;
  }
  AgentSession session;
};

TEST_F(MailPropsTest, SevenPropertiesWithSubjectAndSenderTwice) {
  const std::vector<unsigned char> block = properties("x\n\nbody", "/m");
  EXPECT_EQ(168u, block.size());
  EXPECT_EQ(blockFor("", "/m", "", "", ""), block);
  const std::string text = "x\nSubject: Hi there\nTo: to@x\nFrom: Ann <a@x>\nCc: c@x\n\nbody";
  EXPECT_EQ(blockFor("Hi there", "/mail/In.mbx", "to@x", "Ann <a@x>", "c@x"),
            properties(text, "/mail/In.mbx"));
}

TEST_F(MailPropsTest, NameTableHoldsPointersIntoItself) {
  const uint32_t pointers = 7 * sizeof(char *);
  const uint32_t expectedSize = pointers + 41; // 97 on this build, 69 with 4-byte pointers
  std::vector<unsigned char> table(128, 0xEE);
  uint32_t needed = 0, count = 99;
  EXPECT_EQ(122, getPropertyNames(table.data(), expectedSize - 1, &needed, &count));
  EXPECT_EQ(expectedSize, needed);
  EXPECT_EQ(99u, count);
  EXPECT_EQ(0xEE, table[0]) << "nothing written when it does not fit";
  ASSERT_EQ(0, getPropertyNames(table.data(), expectedSize, &needed, &count));
  EXPECT_EQ(7u, count);
  const char *const *names = reinterpret_cast<const char *const *>(table.data());
  const char *const expected[] = {"subject", "title", "location", "to", "from", "cc", "author"};
  const char *cursor = reinterpret_cast<const char *>(table.data()) + pointers;
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(cursor, names[i]);
    EXPECT_STREQ(expected[i], names[i]);
    cursor += std::strlen(expected[i]) + 1;
  }
  EXPECT_EQ(0xEE, table[expectedSize]);
}
} // namespace
