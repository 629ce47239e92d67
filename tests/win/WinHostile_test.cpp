// The hostile stores on the Win32 face: a view whose file can no longer be read, a mailbox cut
// short or deleted under the agent, folders too deep or looping back, and odd names.
#include "platform/FaultGuard.h"
#include "tests/support/AgentStore.h"

#include <windows.h>

namespace {

TEST(WinFaultGuard, AnInPageErrorEndsTheGuardedCallAgainAndAgainAndNestedCallsUnwindInTurn) {
  for (int round = 0; round < 3; ++round) {
    int reached = 0;
    EXPECT_FALSE(runGuarded([&] {
      ++reached;
      RaiseException(EXCEPTION_IN_PAGE_ERROR, 0, 0, nullptr);
      ++reached;
    }));
    EXPECT_EQ(1, reached);
  }
  bool innerEnded = true;
  EXPECT_TRUE(runGuarded([&] {
    innerEnded = runGuarded([] { RaiseException(EXCEPTION_IN_PAGE_ERROR, 0, 0, nullptr); });
  }));
  EXPECT_FALSE(innerEnded);
  EXPECT_TRUE(runGuarded([] {}));
}

class WinHostileTest : public AgentStoreTest {};

// Windows refuses to cut a mapped file short; where the refusal does not come (a network
// volume, or wine), the read under the view fails. Either way the host lives and the object
// reads whole or reports its failure.
TEST_F(WinHostileTest, AMailboxCutShortOrDeletedUnderTheAgentNeverCrashesTheHost) {
  const std::string body(200000, 'b');
  mailbox("In", eudoraMessage("big", body) + eudoraMessage("next"));
  mailbox("Gone", eudoraMessage("gone"));
  const StoreWalk walked = walk();
  ASSERT_EQ(3u, walked.records.size());
  AgentHandle object = 0;
  ASSERT_EQ(StatusOk, openRecord(entries(), walked.records[0], object));
  const HANDLE file = CreateFileA((mail + "/In.mbx").c_str(), GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, file);
  LARGE_INTEGER at{};
  at.QuadPart = 100;
  const bool cut = SetFilePointerEx(file, at, nullptr, FILE_BEGIN) && SetEndOfFile(file);
  CloseHandle(file);
  const std::string read = readAndClose(entries(), object);
  if (!cut) {
    EXPECT_NE(std::string::npos, read.find(body));
  }
  DeleteFileA((mail + "/Gone.mbx").c_str());
  for (const KeptRecord &record : walked.records)
    reopen(record); // any status will do: the call must come back
  EXPECT_LE(walk().records.size(), 3u);
}

TEST_F(WinHostileTest, OddNamesAreWalkedAndAStoreTooDeepHasNoMailboxes) {
  for (const char *stem : {"with space", "per%cent", "hash#tag", "dots.in.name", "caf\xC3\xA9"})
    mailbox(stem, eudoraMessage(stem));
  EXPECT_EQ(5u, walk().records.size());
  std::string deep = "d";
  for (int level = 0; level < 20; ++level)
    deep += "/d";
  mailbox(deep + "/Deep");
  EXPECT_EQ(0u, walk().records.size());
}

// A link back to the store's root. Where the listing shows the link as a folder (Windows), the
// walk follows it until the depth limit ends it, and the store then has no mailboxes; where it
// shows only a reparse point (wine), the walk passes it over.
TEST_F(WinHostileTest, ALinkLoopRunsIntoTheDepthLimit) {
  mailbox("In");
  const std::string link = mail + "\\loop";
  if (!CreateSymbolicLinkA(link.c_str(), mail.c_str(),
                           SYMBOLIC_LINK_FLAG_DIRECTORY |
                               SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE))
    GTEST_SKIP() << "this system makes no directory links (error " << GetLastError() << ")";
  WIN32_FIND_DATAA listed;
  const HANDLE listing = FindFirstFileA(link.c_str(), &listed);
  if (listing == INVALID_HANDLE_VALUE)
    GTEST_SKIP() << "the link this system made cannot be listed";
  FindClose(listing);
  const bool aFolder = (listed.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  EXPECT_EQ(aFolder ? 0u : 1u, walk().records.size());
}

} // namespace
