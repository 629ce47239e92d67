// A record carries the stamp its mailbox had before the walk read it, so that a mailbox
// written during the walk, or one whose stamp could not be had, is read again, never kept.
#include "cmn/Registry.h"
#include "platform/FilesFaults.h"
#include "tests/support/AgentSession.h"
#include "tests/support/HostWalk.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>

namespace {

const char kKey[] = "Software\\Tuk\\Agents\\MHEudora";
constexpr long kWrittenAt = 1000000;

std::string message(const std::string &subject) {
  return "From ???@??? Mon\r\nSubject: " + subject + "\r\n\r\nBody.\r\n";
}

// What happens once the walk gave A's first message, before it gives A's second and B's one;
// then keepObject's answers for the three records.
struct DuringWalk {
  const char *name;
  void (*happen)(const std::string &mail);
  int kept[3];
};
const DuringWalk kDuringWalk[] = {
    {"nothing", [](const std::string &) {}, {1, 1, 1}},
    {"A is written",
     [](const std::string &mail) {
       appendFile(mail + "/A.mbx", message("late"));
       setFileTime(mail + "/A.mbx", kWrittenAt + 60);
     },
     {0, 0, 1}},
    {"B's status is refused",
     [](const std::string &) { failNextFileOperations(FileOperation::StatPath, EIO); },
     {1, 1, 0}},
};

TEST(MailboxStamp, IsTakenBeforeTheWalkReadsTheMailbox) {
  for (const DuringWalk &during : kDuringWalk) {
    SCOPED_TRACE(during.name);
    TempDir dir;
    const std::string mail = dir.file("mail");
    setenv("TUK_REGISTRY", dir.file("registry.reg").c_str(), 1);
    writeFile(mail + "/A.mbx", message("a1") + message("a2"));
    writeFile(mail + "/B.mbx", message("b1"));
    for (const std::string stem : {"/A", "/B"}) {
      writeFile(mail + stem + ".toc", "");
      setFileTime(mail + stem + ".mbx", kWrittenAt);
    }
    ASSERT_NE(0, SetRegValue(kKey, "MailPath", CString(mail.c_str())));
    LoadedAgent agent;
    agent.init(kKey);
    const AgentEntryTable &e = agent.entries();

    AgentHandle search = 0;
    KeptRecord found[3];
    ASSERT_EQ(StatusOk, findFirst(e, search, found[0]));
    during.happen(mail);
    ASSERT_EQ(StatusOk, findNext(e, search, found[1]));
    ASSERT_EQ(StatusOk, findNext(e, search, found[2]));
    clearFileOperationFailures();
    EXPECT_EQ(StatusOk, e.closeFindObjectHandle(search));
    for (int i = 0; i < 3; ++i) {
      const KeptRecord &r = found[i];
      RecordBuffer record(r.path, r.offset, r.length, r.checksum, r.stamp);
      EXPECT_EQ(during.kept[i], e.keepObject(record.get(), 0)) << r.path << " at " << r.offset;
    }
    e.terminateAgent();
  }
}

} // namespace
