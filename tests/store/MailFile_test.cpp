// Mapping a mailbox, finding a message again, and cutting each client's files into messages.
#include "store/MailFile.h"

#include "clients/Delimiters.h"
#include "clients/Eudora.h"
#include "clients/InternetMail.h"
#include "clients/Pegasus.h"
#include "tests/support/AgentSession.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

const std::string kEudora(reinterpret_cast<const char *>(kEudoraDelimiter), 12);
const std::string kInternet(reinterpret_cast<const char *>(kInternetMailDelimiter), 4);
const std::string kPegasus(reinterpret_cast<const char *>(kPegasusDelimiter), 3);

class MailFileTest : public ::testing::Test {
protected:
  AgentSession session;
  TempDir dir;

  // Every message that the file's scan frames, as (offset, length); the scan must give the
  // end again and again once it is there.
  template <class MailFile> Ranges frame(const std::string &bytes) {
    const std::string path = dir.file("box");
    writeFile(path, bytes);
    MailFile file;
    EXPECT_EQ(0, file.init(CString(path.c_str())));
    Ranges ranges;
    uint32_t offset = 0, length = 0;
    while (auto message = file.getNextMsg(&offset, &length)) {
      ranges.emplace_back(offset, length);
      EXPECT_EQ(length, message->bodyLength + (length - message->bodyLength));
    }
    EXPECT_EQ(nullptr, file.getNextMsg(&offset, &length));
    EXPECT_EQ(-1, file.nextMessage());
    return ranges;
  }
};

TEST_F(MailFileTest, GenericScanOverTheEudoraDelimiter) {
  const std::string &d = kEudora;
  EXPECT_EQ((Ranges{{12, 4}}), frame<CEudoraMailFile>(d + "text"));
  EXPECT_EQ((Ranges{{0, 4}, {16, 3}}), frame<CEudoraMailFile>("text" + d + "two"));
  // Adjacent delimiters are both skipped; no empty message lies between them.
  EXPECT_EQ((Ranges{{24, 1}}), frame<CEudoraMailFile>(d + d + "x"));
  // A delimiter whose last byte ends the file belongs to the message in front of it.
  EXPECT_EQ((Ranges{{0, 16}}), frame<CEudoraMailFile>("text" + d));
  EXPECT_EQ((Ranges{{0, 12}}), frame<CEudoraMailFile>(d));
  EXPECT_EQ((Ranges{{12, 1}}), frame<CEudoraMailFile>(d + "x"));
  EXPECT_EQ((Ranges{{0, 9}}), frame<CEudoraMailFile>("no delims"));
  // It counts in the middle of a line; a near miss is text.
  EXPECT_EQ((Ranges{{0, 5}, {17, 2}}), frame<CEudoraMailFile>("line " + d + "ab"));
  EXPECT_EQ((Ranges{{0, 16}}), frame<CEudoraMailFile>("from ???@???abcd"));
  EXPECT_EQ((Ranges{{0, 16}}), frame<CEudoraMailFile>("From ???@??" "!abcd"));
}

TEST_F(MailFileTest, InternetMailDelimiterHoldsZeroBytesAndOverlapsItself) {
  const std::string &d = kInternet;
  // Of 00 7F 00 7F 00 7F the first four are the delimiter; the message starts with 00 7F.
  EXPECT_EQ((Ranges{{4, 4}}), frame<CInternetMailMailFile>(d + std::string("\0\x7F" "ab", 4)));
  EXPECT_EQ((Ranges{{4, 5}, {13, 1}}),
            frame<CInternetMailMailFile>(d + std::string("a\0b\0c", 5) + d + "z"));
  EXPECT_EQ((Ranges{{0, 6}}), frame<CInternetMailMailFile>("ab" + d));
}

TEST_F(MailFileTest, PegasusScanStartsBehindTheFileHeader) {
  const std::string header(128, 'h');
  EXPECT_EQ(Ranges{}, frame<CPegasusMailFile>(header));
  EXPECT_EQ((Ranges{{128, 1}}), frame<CPegasusMailFile>(header + "x"));
  EXPECT_EQ((Ranges{{131, 2}}), frame<CPegasusMailFile>(header + kPegasus + "ab"));
  EXPECT_EQ((Ranges{{134, 1}}), frame<CPegasusMailFile>(header + kPegasus + kPegasus + "a"));
  EXPECT_EQ((Ranges{{128, 5}}), frame<CPegasusMailFile>(header + "ab" + kPegasus));
  EXPECT_EQ((Ranges{{128, 4}}), frame<CPegasusMailFile>(header + "a\n\nb"));
  // A delimiter inside the file header is never seen.
  const std::string early = kPegasus + std::string(125, 'h');
  EXPECT_EQ((Ranges{{128, 2}, {133, 1}}), frame<CPegasusMailFile>(early + "ab" + kPegasus + "c"));
  EXPECT_EQ(Ranges{}, frame<CPegasusMailFile>("short"));
}

TEST_F(MailFileTest, ReopeningRestartsTheScan) {
  const std::string path = dir.file("In.pmm");
  writeFile(path, std::string(128, 'h') + "one" + kPegasus + "two");
  CPegasusMailFile file;
  ASSERT_EQ(0, file.init(CString(path.c_str())));
  uint32_t offset = 0, length = 0;
  ASSERT_NE(nullptr, file.getNextMsg(&offset, &length));
  ASSERT_NE(nullptr, file.getNextMsg(&offset, &length));
  EXPECT_EQ(134u, offset);
  ASSERT_EQ(0, file.setMailbox(CString(path.c_str())));
  ASSERT_NE(nullptr, file.getNextMsg(&offset, &length));
  EXPECT_EQ(128u, offset);
}

TEST_F(MailFileTest, GetMsgAtTakesRangesThatEndAtTheEndOfTheFile) {
  const std::string path = dir.file("In.mbx");
  writeFile(path, "0123456789");
  CEudoraMailFile file;
  ASSERT_EQ(0, file.init(CString(path.c_str())));
  EXPECT_NE(nullptr, file.getMsgAt(4, 6));
  EXPECT_EQ(4u, file.msgOffset);
  EXPECT_EQ(nullptr, file.getMsgAt(4, 7));
  EXPECT_EQ(nullptr, file.getMsgAt(0xFFFFFFF0u, 0x20));  // no wrap-around
  EXPECT_EQ(4u, file.msgOffset);
  EXPECT_EQ(6u, file.msgLength);
  const auto empty = file.getMsgAt(10, 0);
  ASSERT_NE(nullptr, empty);
  EXPECT_EQ(0u, empty->bodyLength);
  EXPECT_TRUE(empty->subject.IsEmpty());
}

TEST_F(MailFileTest, OpeningFailsCleanly) {
  CEudoraMailFile file;
  EXPECT_EQ(0, file.init(""));  // an empty path opens nothing
  EXPECT_EQ(0, file.isOpen());
  uint32_t offset, length;
  EXPECT_EQ(nullptr, file.getNextMsg(&offset, &length));

  writeFile(dir.file("empty.mbx"), "");
  EXPECT_EQ(-1, file.init(CString(dir.file("empty.mbx").c_str())));
  EXPECT_EQ(-1, file.init(CString(dir.path().c_str())));  // a directory
  EXPECT_EQ(-1, file.init(CString(dir.file("missing").c_str())));
  EXPECT_EQ(0, file.isOpen());
  EXPECT_TRUE(file.fileName.IsEmpty());

  // A second init replaces the delimiter and keeps working.
  writeFile(dir.file("In.mbx"), "abc");
  EXPECT_EQ(0, file.init(CString(dir.file("In.mbx").c_str())));
  EXPECT_EQ(12u, file.delimiterLength);
  EXPECT_EQ(0, file.init(""));
  EXPECT_EQ(0, file.isOpen());
  EXPECT_EQ(dir.file("In.mbx"), std::string(*file.getFileName()));
}

TEST_F(MailFileTest, AMailboxCutShortUnderItsMappingFailsThatMessageOnly) {
  const std::string path = dir.file("In.mbx");
  writeFile(path, std::string(3 * 4096, 'a') + kEudora + std::string(5 * 4096, 'b'));
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

TEST(FileStamp, IsTheLastWriteTimeOrZero) {
  TempDir dir;
  writeFile(dir.file("a"), "x");
  setFileTime(dir.file("a"), 900000000);
  EXPECT_EQ(900000000, fileStamp(dir.file("a").c_str()));
  EXPECT_EQ(0, fileStamp(dir.file("missing").c_str()));
}

} // namespace
