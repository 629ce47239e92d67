// openObject keeps the mailbox it mapped for the next object: whatever happens to the file
// between two opens, each open sees the file as it is then.
#include "tests/support/HostWalk.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/Reference.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace {

const std::string kFirst = "From ???@??? Mon\r\nx\r\nSubject: one\r\n\r\nfirst body\r\n";
const std::string kSecond = "From ???@??? Tue\r\nx\r\nSubject: two\r\n\r\nsecond body\r\n";

class ObjectMailboxTest : public ::testing::Test {
protected:
  void SetUp() override {
    mailbox = dir.file("In.mbx");
    writeFile(mailbox, kFirst);
    agent.init("Software\\Tuk\\Agents\\MHEudora");
  }
  void TearDown() override { agent.entries().terminateAgent(); }

  // Opens the message of `bytes` at `offset` as a record names it and reads its body; the
  // status of the open.
  int32_t openAt(uint32_t offset, const std::string &bytes, std::string *body = nullptr) {
    KeptRecord record;
    record.path = mailbox;
    record.offset = offset;
    record.length = static_cast<uint32_t>(bytes.size());
    record.checksum = referenceChecksum(bytes);
    return reopen(agent.entries(), record, body);
  }

  TempDir dir;
  std::string mailbox;
  LoadedAgent agent;
};

constexpr uint32_t kDelimiter = 18; // "From ???@??? Mon\r\n"

TEST_F(ObjectMailboxTest, SeesMessagesAppendedAfterTheLastOpen) {
  ASSERT_EQ(StatusOk, openAt(kDelimiter, kFirst.substr(kDelimiter)));
  appendFile(mailbox, kSecond);
  std::string body;
  EXPECT_EQ(StatusOk, openAt(static_cast<uint32_t>(kFirst.size()) + kDelimiter,
                             kSecond.substr(kDelimiter), &body));
  EXPECT_EQ("second body\r\n", body);
}

TEST_F(ObjectMailboxTest, SeesBytesWrittenInPlace) {
  ASSERT_EQ(StatusOk, openAt(kDelimiter, kFirst.substr(kDelimiter)));
  std::string changed = kFirst;
  changed.replace(changed.find("first"), 5, "FIRST");
  {
    std::fstream file(mailbox, std::ios::in | std::ios::out | std::ios::binary);
    file.write(changed.data(), static_cast<std::streamsize>(changed.size()));
  }
  EXPECT_EQ(StatusOpenFailed, openAt(kDelimiter, kFirst.substr(kDelimiter)));
  std::string body;
  EXPECT_EQ(StatusOk, openAt(kDelimiter, changed.substr(kDelimiter), &body));
  EXPECT_EQ("FIRST body\r\n", body);
}

// A client that compacts a mailbox writes a new file and renames it over the old one: the
// same name, the same size, other bytes.
TEST_F(ObjectMailboxTest, SeesAMailboxReplacedUnderItsName) {
  ASSERT_EQ(StatusOk, openAt(kDelimiter, kFirst.substr(kDelimiter)));
  std::string replacement = kFirst;
  replacement.replace(replacement.find("one"), 3, "new");
  writeFile(dir.file("In.mbx.new"), replacement);
  ASSERT_EQ(0, std::rename(dir.file("In.mbx.new").c_str(), mailbox.c_str()));
  EXPECT_EQ(StatusOpenFailed, openAt(kDelimiter, kFirst.substr(kDelimiter)));
  EXPECT_EQ(StatusOk, openAt(kDelimiter, replacement.substr(kDelimiter)));
}

TEST_F(ObjectMailboxTest, ACutOrRemovedMailboxFailsAndAnotherStillOpens) {
  ASSERT_EQ(StatusOk, openAt(kDelimiter, kFirst.substr(kDelimiter)));
  writeFile(mailbox, kFirst.substr(0, 30));
  EXPECT_EQ(StatusOpenFailed, openAt(kDelimiter, kFirst.substr(kDelimiter)));
  ASSERT_EQ(0, std::remove(mailbox.c_str()));
  EXPECT_EQ(StatusMailFileFailed, openAt(kDelimiter, kFirst.substr(kDelimiter)));
  const std::string other = mailbox;
  mailbox = dir.file("Out.mbx");
  writeFile(mailbox, kSecond);
  EXPECT_EQ(StatusOk, openAt(kDelimiter, kSecond.substr(kDelimiter)));
  // And back to a mailbox opened before, now present again.
  mailbox = other;
  writeFile(mailbox, kFirst);
  EXPECT_EQ(StatusOk, openAt(kDelimiter, kFirst.substr(kDelimiter)));
}

} // namespace
