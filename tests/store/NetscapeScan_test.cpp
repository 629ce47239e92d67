// The Netscape scan: which lines are delimiter lines, and the bounded reader that decides it.
#include "clients/Delimiters.h"
#include "clients/Netscape.h"
#include "clients/ScanFormat.h"
#include "tests/support/AgentSession.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <utility>
#include <vector>

namespace {

using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

const std::string kLine = "From x y z 12 01:02:03 1998\n";  // 28 bytes

int scan(const std::string &line) {
  ScanFields fields = {};
  const auto *bytes = reinterpret_cast<const unsigned char *>(line.data());
  return scanFormat(kNetscapeDelimiterText, bytes, bytes + line.size(), fields);
}

TEST(ScanFormat, CountsConversionsAsSscanfDoes) {
  EXPECT_EQ(8, scan(kLine));
  EXPECT_EQ(8, scan("From x y z 12 01:02:03 1998\r\n"));
  EXPECT_EQ(8, scan("From x y z 12 01:02:03 1998 and more words\n"));
  EXPECT_EQ(3, scan("From here to there and back\n"));
  EXPECT_EQ(7, scan("From x y z 12 01:02:03\n"));
  EXPECT_EQ(8, scan("Fromage y z 12 01:02:03 1998\n"));   // "age" is the first word
  EXPECT_EQ(3, scan("Fromage x y z 12 01:02:03 1998\n"));  // %d meets "z"
  EXPECT_EQ(-1, scan("From "));
  EXPECT_EQ(0, scan("Frog x"));
  EXPECT_EQ(8, scan(std::string(99, 'w').insert(0, "From ") + " y z 1 2:3:4 5\n"));
  EXPECT_EQ(0, scan(std::string(100, 'w').insert(0, "From ") + " y z 1 2:3:4 5\n"));
  EXPECT_EQ(2, scan(std::string("From a b\0 c 1 2:3:4 5\n", 22)));  // a zero byte ends the text
}

// Differential: on lines whose words fit their fields, the reader and sscanf agree.
TEST(ScanFormat, AgreesWithSscanfOnRandomLines) {
  std::mt19937 random(11);
  const std::string alphabet = "From x12: -+\t\r\n0ab";
  for (int round = 0; round < 20000; ++round) {
    std::string line = round % 3 ? "From " : "";
    const size_t length = random() % 40;
    for (size_t i = 0; i < length; ++i)
      line += alphabet[random() % alphabet.size()];
    if (round % 2)
      line = kLine.substr(0, random() % kLine.size()) + line;
    char words[3][200];
    int numbers[5];
    const int expected = std::sscanf(line.c_str(), "From %199s %199s %199s %d %d:%d:%d %d\n",
                                     words[0], words[1], words[2], &numbers[0], &numbers[1],
                                     &numbers[2], &numbers[3], &numbers[4]);
    ASSERT_EQ(expected, scan(line)) << "line: " << line;
  }
}

class NetscapeScanTest : public ::testing::Test {
protected:
  Ranges frame(const std::string &bytes) {
    const std::string path = dir.file("Inbox");
    writeFile(path, bytes);
    CNetscapeMailFile file;
    EXPECT_EQ(0, file.init(CString(path.c_str())));
    Ranges ranges;
    uint32_t offset = 0, length = 0;
    while (auto message = file.getNextMsg(&offset, &length))
      ranges.emplace_back(offset, length);
    EXPECT_EQ(-1, file.nextMessage());
    EXPECT_EQ(-1, file.nextMessage());
    return ranges;
  }

  AgentSession session{"MHNetscape"};
  TempDir dir;
};

TEST_F(NetscapeScanTest, DelimiterLinesStartMessages) {
  const std::string text = "Subject: a\n\nbody\n";  // 17 bytes
  EXPECT_EQ((Ranges{{28, 17}}), frame(kLine + text));
  EXPECT_EQ((Ranges{{0, 4}, {32, 17}}), frame("pre\n" + kLine + text));
  // Two delimiter lines in a row: no empty message between them.
  EXPECT_EQ((Ranges{{56, 17}}), frame(kLine + kLine + text));
  // In the middle of a line it counts as well.
  EXPECT_EQ((Ranges{{0, 5}, {33, 17}}), frame("text " + kLine + text));
  // Lines that only start with "From" are text.
  const std::string prose = "From here to there and back\nFrom x y z 12 01:02:03\n";
  EXPECT_EQ((Ranges{{28, prose.size() + 17}}), frame(kLine + prose + text));
}

TEST_F(NetscapeScanTest, DelimiterLineAtTheEndOfTheFile) {
  // With 30 or more bytes it is a delimiter line, and the last message is empty.
  const std::string longLine = "From xx yy zz 12 01:02:03 1998\n";
  ASSERT_GE(longLine.size(), 30u);
  EXPECT_EQ((Ranges{{0, 4}, {35, 0}}), frame("abc\n" + longLine));
  // Shorter, it fails the quick test and stays in the message in front of it.
  EXPECT_EQ((Ranges{{0, 4 + kLine.size()}}), frame("abc\n" + kLine));
  // Without a line feed behind it, it is text.
  const std::string unended = "abc\nFrom x y z 12 01:02:03 1998 no end";
  EXPECT_EQ((Ranges{{0, unended.size()}}), frame(unended));
}

TEST_F(NetscapeScanTest, FirstHeaderLineStandsRightBehindTheDelimiterLine) {
  const std::string path = dir.file("Inbox");
  writeFile(path, kLine + "Subject: first line\nTo: t@x\n\nbody");
  CNetscapeMailFile file;
  ASSERT_EQ(0, file.init(CString(path.c_str())));
  uint32_t offset, length;
  const auto message = file.getNextMsg(&offset, &length);
  ASSERT_NE(nullptr, message);
  EXPECT_TRUE(message->subject.IsEmpty());
  EXPECT_EQ("t@x", std::string(message->to));
}

TEST_F(NetscapeScanTest, ManyCandidatesWithoutALineFeedStayLinear) {
  // Every "From" passes the quick test and none has a line feed behind it; the line-feed
  // search is made once for all of them.
  std::string bytes;
  for (int i = 0; i < 200000; ++i)
    bytes += "From ";
  EXPECT_EQ((Ranges{{0, bytes.size()}}), frame(bytes));
}

} // namespace
