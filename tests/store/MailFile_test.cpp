// Cutting each client's mail files into messages: concrete framings, the Netscape line reader
// against sscanf, each scan against a place-by-place reference over random mailboxes, and a
// mailbox cut short under its mapping.
#include "clients/Delimiters.h"
#include "clients/Eudora.h"
#include "clients/InternetMail.h"
#include "clients/NSMFile.h"
#include "clients/Pegasus.h"
#include "clients/ScanFormat.h"
#include "store/MailFile.h"
#include "tests/store/AtEachWidth.h"
#include "tests/support/AgentSession.h"
#include "tests/support/Reference.h"
#include "tests/support/TestFiles.h"
#include <cstdio>
#include <random>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {
using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

const std::string kEudora(reinterpret_cast<const char *>(kEudoraDelimiter), 12);
const std::string kInternet(reinterpret_cast<const char *>(kInternetMailDelimiter), 4);
const std::string kPegasus(reinterpret_cast<const char *>(kPegasusDelimiter), 3);
const std::string kLine = "From x y z 12 01:02:03 1998\n"; // 28 bytes: a Netscape delimiter

class MailFileTest : public ::testing::Test {
public:
  // Every message the client's scan frames, as (offset, length); once at the end, the scan
  // must stay there.
  template <class MailFile> Ranges frame(const std::string &bytes) {
    const std::string path = dir.file("box");
    writeFile(path, bytes);
    MailFile file;
    EXPECT_EQ(0, file.init(CString(path.c_str())));
    Ranges ranges;
    uint32_t offset = 0, length = 0;
    while (file.getNextMsg(&offset, &length))
      ranges.emplace_back(offset, length);
    EXPECT_EQ(nullptr, file.getNextMsg(&offset, &length));
    EXPECT_EQ(-1, file.nextMessage());
    return ranges;
  }
  AgentSession session;
  TempDir dir;
};

TEST_F(MailFileTest, EachClientsDelimitersFrameTheMessages) {
  const std::string h(kPegasusFileHeaderSize, 'h'), text = "Subject: a\n\nbody\n"; // 17 bytes
  const std::string prose = "From here to there and back\nFrom x y z 12 01:02:03\n";
  using Frame = Ranges (MailFileTest::*)(const std::string &);
  const Frame e = &MailFileTest::frame<CEudoraMailFile>,
              i = &MailFileTest::frame<CInternetMailMailFile>,
              n = &MailFileTest::frame<CNetscapeMailFile>,
              p = &MailFileTest::frame<CPegasusMailFile>;
  const std::tuple<Frame, std::string, Ranges> cases[] = {
      {e, kEudora + "text", {{12, 4}}},
      {e, "text" + kEudora + "two", {{0, 4}, {16, 3}}},
      // Adjacent delimiters are both skipped: no empty message lies between them.
      {e, kEudora + kEudora + "x", {{24, 1}}},
      // A delimiter whose last byte ends the file belongs to the message in front of it.
      {e, "text" + kEudora, {{0, 16}}},
      // It counts in the middle of a line; near misses are text.
      {e, "line " + kEudora + "ab", {{0, 5}, {17, 2}}},
      {e, "from ???@???abcd", {{0, 16}}},
      {e, "From ???@?\?!abcd", {{0, 16}}},
      // Of 00 7F 00 7F 00 7F the first four are the delimiter; the message starts with 00 7F.
      {i, kInternet + std::string("\0\x7F", 2) + "ab", {{4, 4}}},
      {i, kInternet + std::string("a\0b\0c", 5) + kInternet + "z", {{4, 5}, {13, 1}}},
      {p, h, {}},
      {p, "short", {}},
      {p, h + "x", {{128, 1}}},
      {p, h + kPegasus + "ab", {{131, 2}}},
      {p, h + "ab" + kPegasus, {{128, 5}}},
      {p, h + "a\n\nb", {{128, 4}}},
      // A delimiter inside the file header is never seen.
      {p, kPegasus + h.substr(3) + "ab" + kPegasus + "c", {{128, 2}, {133, 1}}},
      {n, kLine + text, {{28, 17}}},
      {n, kLine + kLine + text, {{56, 17}}},
      {n, "text " + kLine + text, {{0, 5}, {33, 17}}},
      // Lines that only start with "From" are text.
      {n, kLine + prose + text, {{28, prose.size() + 17}}},
      // At the end of the file: with 30 bytes or more a delimiter line, and the last message
      // is empty; shorter, it fails the quick test; without a line feed, it is text.
      {n, "abc\nFrom xx yy zz 12 01:02:03 1998\n", {{0, 4}, {35, 0}}},
      {n, "abc\n" + kLine, {{0, 32}}},
      {n, "abc\nFrom x y z 12 01:02:03 1998 no end", {{0, 38}}},
  };
  for (const auto &[client, bytes, expected] : cases)
    EXPECT_EQ(expected, (this->*client)(bytes)) << bytes;
}

int scan(const std::string &line) {
  ScanFields fields = {};
  const auto *bytes = reinterpret_cast<const unsigned char *>(line.data());
  return scanFormat(kNetscapeDelimiterText, bytes, bytes + line.size(), fields);
}

TEST(ScanFormat, CountsConversionsAsSscanfDoesWithinItsBounds) {
  EXPECT_EQ(8, scan(kLine));
  EXPECT_EQ(8, scan("From x y z 12 01:02:03 1998\r\n"));
  EXPECT_EQ(8, scan("From x y z 12 01:02:03 1998 and more words\n"));
  EXPECT_EQ(7, scan("From x y z 12 01:02:03\n"));
  EXPECT_EQ(8, scan("Fromage y z 12 01:02:03 1998\n"));   // "age" is the first word
  EXPECT_EQ(3, scan("Fromage x y z 12 01:02:03 1998\n")); // %d meets "z"
  EXPECT_EQ(-1, scan("From "));
  EXPECT_EQ(0, scan("Frog x"));
  // A word of 100 characters is no delimiter line; 99 is.
  EXPECT_EQ(8, scan(std::string(99, 'w').insert(0, "From ") + " y z 1 2:3:4 5\n"));
  EXPECT_EQ(0, scan(std::string(100, 'w').insert(0, "From ") + " y z 1 2:3:4 5\n"));
  EXPECT_EQ(2, scan(std::string("From a b\0 c 1 2:3:4 5\n", 22))); // a zero byte ends the text
}

// Formats of other shapes: runs of white space, "%%", a conversion next to a literal or
// another conversion, a format that ends behind a literal. Fields are read into the reader's
// own sizes, which the random words never reach.
TEST(ScanFormat, ReadsOtherFormatsAsSscanfDoes) {
  const std::vector<std::string> formats = {"%d:%d", "x%%y %d", "  %s\t %d", "%s%d z", "%d%%"};
  std::mt19937 random(5);
  const std::string alphabet = "xyz %:-19\t\n";
  for (const std::string &format : formats) {
    const ScanProgram program(format.c_str());
    for (int round = 0; round < 3000; ++round) {
      std::string line;
      for (size_t i = random() % 12; i > 0; --i)
        line += alphabet[random() % alphabet.size()];
      char word[kMaxScanWord];
      int numbers[2] = {};
      const bool wordFirst = format.find("%s") != std::string::npos;
      const int expected =
          wordFirst ? std::sscanf(line.c_str(), format.c_str(), word, &numbers[0])
                    : std::sscanf(line.c_str(), format.c_str(), &numbers[0], &numbers[1]);
      ScanFields fields;
      const auto *bytes = reinterpret_cast<const unsigned char *>(line.data());
      ASSERT_EQ(expected, program.scan(bytes, bytes + line.size(), fields))
          << "format: " << format << " line: " << line;
    }
  }
}

// On lines whose words fit their fields, the reader and sscanf agree.
TEST(ScanFormat, AgreesWithSscanfOnRandomLines) {
  std::mt19937 random(11);
  const std::string alphabet = "From x12: -+\t\r\n0ab";
  for (int round = 0; round < 20000; ++round) {
    std::string line = round % 3 ? "From " : "";
    const size_t length = random() % 40;
    for (size_t i = 0; i < length; ++i)
      line += alphabet[random() % alphabet.size()];
    if (round % 2)
      line.insert(0, kLine, 0, random() % kLine.size());
    char words[3][200];
    int numbers[5];
    const int expected =
        std::sscanf(line.c_str(), "From %199s %199s %199s %d %d:%d:%d %d\n", words[0], words[1],
                    words[2], &numbers[0], &numbers[1], &numbers[2], &numbers[3], &numbers[4]);
    ASSERT_EQ(expected, scan(line)) << "line: " << line;
  }
}

// The framing as the scans' definitions read, one place at a time: the generic scan over a
// delimiter from `start`, and the Netscape scan's quick test, line-feed search and parse.
Ranges referenceFrames(const std::string &file, const std::string &delimiter, uint32_t start,
                       bool netscape = false) {
  Ranges ranges;
  const size_t size = file.size(), n = netscape ? kNetscapeDelimiterLength : delimiter.size();
  size_t offset = start;
  while (offset < size) {
    size_t pos = offset, end = size;
    for (; pos + n < size; ++pos) {
      size_t behind = pos + n; // where the message behind a delimiter here starts
      if (netscape) {
        const size_t lineFeed = file.find('\n', pos + 4);
        ScanFields fields = {};
        const auto *bytes = reinterpret_cast<const unsigned char *>(file.data());
        if (file.compare(pos, 4, "From") != 0 || lineFeed == std::string::npos ||
            scanFormat(kNetscapeDelimiterText, bytes + pos, bytes + lineFeed + 1, fields) != 8)
          continue;
        behind = lineFeed + 1;
      } else if (file.compare(pos, n, delimiter) != 0) {
        continue;
      }
      if (pos != offset) {
        end = pos;
        break;
      }
      offset = behind;
      pos = offset - 1;
    }
    ranges.emplace_back(offset, end - offset);
    offset = end;
  }
  return ranges;
}

// A mailbox of random pieces: whole and broken delimiters, text, lines that start with "From"
// with and without the colons of a time, base64, and a line longer than any test of a line's
// colons reaches.
std::string randomMailbox(std::mt19937 &random, const std::string &delimiter) {
  static const std::vector<std::string> pieces = {"Subject: hi\r\n\r\nbody\r\n",
                                                  "From: ann@example.org\n",
                                                  "From what I hear\n",
                                                  "From x y z 12 01:02:03 1998\n",
                                                  "From - Thu Jan 15 10:30:45 1998\n",
                                                  "From a b c 1 2:3 4\n",
                                                  "QUJDRGVGZ2hpamtsbW5vcA==\n",
                                                  "??@ ???@??? @???\n",
                                                  "\n\n",
                                                  "\n\x1a",
                                                  std::string("\x00\x7f\x00", 3),
                                                  "Fr",
                                                  "om ",
                                                  ":",
                                                  "\n",
                                                  "From " + std::string(300, 'x') +
                                                      " y z 1 2:3:4 5\n"};
  std::string bytes;
  const size_t count = random() % 40;
  for (size_t i = 0; i < count; ++i)
    bytes += random() % 4 == 0 ? delimiter : pieces[random() % pieces.size()];
  return bytes.empty() ? "x" : bytes; // a file of zero bytes can't be mapped
}

TEST_F(MailFileTest, EveryScanFramesAsThePlaceByPlaceReference) {
  std::mt19937 random(23);
  const std::string netscape = "From - Thu Jan 15 10:30:45 1998\n";
  atEachWidth([&] {
    for (int round = 0; round < 150; ++round) {
      std::string bytes = randomMailbox(random, kEudora);
      ASSERT_EQ(referenceFrames(bytes, kEudora, 0), frame<CEudoraMailFile>(bytes)) << round;
      bytes = randomMailbox(random, kInternet);
      ASSERT_EQ(referenceFrames(bytes, kInternet, 0), frame<CInternetMailMailFile>(bytes));
      bytes = std::string(kPegasusFileHeaderSize, 'h') + randomMailbox(random, kPegasus);
      ASSERT_EQ(referenceFrames(bytes, kPegasus, kPegasusFileHeaderSize),
                frame<CPegasusMailFile>(bytes));
      for (int twice = 0; twice < 2; ++twice) {
        bytes = randomMailbox(random, netscape);
        ASSERT_EQ(referenceFrames(bytes, "", 0, true), frame<CNetscapeMailFile>(bytes));
      }
    }
  });
}

TEST_F(MailFileTest, AMailboxCutShortUnderItsMappingFailsThatMessageOnly) {
  const std::string path = dir.file("In.mbx");
  writeFile(path,
            std::string(size_t{3} * 4096, 'a') + kEudora + std::string(size_t{5} * 4096, 'b'));
  CEudoraMailFile file;
  ASSERT_EQ(0, file.init(CString(path.c_str())));
  ASSERT_EQ(0, truncate(path.c_str(), 4096));
  // The range lies inside the mapping but no longer inside the file.
  EXPECT_EQ(nullptr, file.getMsgAt(3 * 4096 + 12, 5 * 4096));
  uint32_t offset, length;
  EXPECT_EQ(nullptr, file.getNextMsg(&offset, &length));
  // What is still there reads as before.
  const auto head = file.getMsgAt(0, 100);
  ASSERT_NE(nullptr, head);
  EXPECT_EQ(referenceChecksum(std::string(100, 'a')), head->checksum);
}
} // namespace
