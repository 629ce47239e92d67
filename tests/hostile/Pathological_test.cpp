// Inputs built to make a linear scan quadratic or a read wait forever: each must end well
// within a generous bound. They run in a child, so that a hang fails the test instead of the
// run; the bounds catch a blow-up of orders of magnitude, not a slow machine.
#include "clients/Eudora.h"
#include "clients/InternetMail.h"
#include "clients/NSMFile.h"
#include "clients/Pegasus.h"
#include "include/tuk/AgentLog.h"
#include "platform/Profile.h"
#include "store/MAILDATE.h"
#include "tests/support/AgentSession.h"
#include "tests/support/TestFiles.h"
#include <cstdarg>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
constexpr unsigned kBound = 60; // seconds; each case takes well under one when linear

// True when `work` ends within `seconds` in a child, returning true.
bool endsWithin(unsigned seconds, const std::function<bool()> &work) {
  const int status = runInChild([&] { return work() ? 0 : 1; }, seconds);
  EXPECT_TRUE(WIFEXITED(status)) << describeStatus(status);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Walks the mailbox at `path` with the client's scan to its end; the number of messages.
template <class MailFile> long framedMessages(const std::string &path) {
  MailFile file;
  if (file.init(CString(path.c_str())) != 0)
    return -1;
  long count = 0;
  uint32_t offset = 0, length = 0;
  while (file.getNextMsg(&offset, &length))
    ++count;
  return count;
}

// A host's log sink that formats every line, as one that writes them somewhere would.
int formatIntoSmallBuffer(uint32_t, const char *, int, const char *format, ...) {
  char line[256];
  va_list args;
  va_start(args, format);
  std::vsnprintf(line, sizeof line, format, args);
  va_end(args);
  return 0;
}

class PathologicalTest : public ::testing::Test {
protected:
  std::string box(const std::string &bytes) {
    std::string path = dir.file("box");
    writeFile(path, bytes);
    return path;
  }
  AgentSession session;
  TempDir dir;
};

TEST_F(PathologicalTest, MailboxesOfOneRepeatedPatternScanInLinearTime) {
  constexpr size_t kSize = 4 << 20;
  for (const std::string &unit : {std::string("F"), std::string(1, '\0'), std::string("\n"),
                                  std::string("From "), std::string("\n\n"), std::string("\r")}) {
    const std::string path = box(repeated(unit, kSize / unit.size()));
    EXPECT_TRUE(endsWithin(kBound,
                           [&] {
                             return framedMessages<CEudoraMailFile>(path) == 1 &&
                                    framedMessages<CInternetMailMailFile>(path) == 1 &&
                                    framedMessages<CPegasusMailFile>(path) == 1 &&
                                    framedMessages<CNetscapeMailFile>(path) >= 1;
                           }))
        << "unit of " << unit.size() << " bytes";
  }
}

// Every "From" of this file passes the quick test and has a line feed behind it, at the very
// end: the line that each one starts must not be read to its end each time, nor carried by a
// log line when the log is on.
TEST_F(PathologicalTest, NetscapeFromAfterFromOnOneLongLine) {
  for (const bool logged : {false, true}) {
    const std::string path = box(repeated("From", logged ? 1 << 19 : 2 << 20) + "\n");
    EXPECT_TRUE(endsWithin(kBound,
                           [&] {
                             logSink = formatIntoSmallBuffer;
                             logEnabled = logged;
                             return framedMessages<CNetscapeMailFile>(path) == 1;
                           }))
        << "log " << logged;
  }
}

TEST_F(PathologicalTest, ADateOfAMillionTokens) {
  const CString text(repeated("1 Jan ", 1 << 20).c_str());
  EXPECT_TRUE(endsWithin(kBound, [&] { return CMailDate(text).getMonth() == -1; }));
}

// eudora.ini lies in the mail folder, which is the user's: it may be anything.
TEST_F(PathologicalTest, AnIniFileThatIsAPipeOrAFolder) {
  const std::string pipe = dir.file("pipe.ini");
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  makeDirs(dir.file("folder.ini"));
  for (const std::string &path : {pipe, dir.file("folder.ini")}) {
    EXPECT_TRUE(endsWithin(10, [&] {
      char value[64];
      const DWORD copied = GetPrivateProfileStringA("Settings", "AttachFolder", "default", value,
                                                    sizeof value, path.c_str());
      return copied == 7 && std::string(value) == "default";
    })) << path;
  }
}
} // namespace
