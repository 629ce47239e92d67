// RunObject while the mailbox changes: the View Email window shows the message as it was
// found, whatever becomes of the mailbox while the person reads it, and a record whose bytes
// have changed or gone gets the box that asks for a reindex.
#include "resources/resource.h"
#include "tests/platform/ScriptedUser.h"
#include "tests/support/AgentSession.h"
#include "tests/support/AgentStore.h"
#include <sys/stat.h>
#include <unistd.h>

namespace {
class RunObjectUnderChangeTest : public AgentStoreTest {
protected:
  void SetUp() override {
    AgentStoreTest::SetUp();
    mailbox("In", eudoraMessage("one", "First body.\r\n") + eudoraMessage("two", "Second.\r\n"));
    mailbox("Next", eudoraMessage("next"));
    // The person reads the message window, doing `whileReading` before letting it close.
    user.onModal = [&](TukWindow window) {
      if (whileReading)
        whileReading();
      body = windowText(tukWindowFindChild(window, IDC_VIEW_BODY));
    };
  }
  // The kinds of what the person was shown, in order.
  std::vector<int32_t> shown() const {
    std::vector<int32_t> kinds;
    for (const ScriptedUser::Event &event : user.events)
      kinds.push_back(event.kind);
    return kinds;
  }

  int32_t run(const KeptRecord &record) {
    RecordBuffer buffer(record.path, record.offset, record.length, record.checksum, record.stamp);
    return entries().RunObject(buffer.get());
  }

  const std::string box = mail + "/In.mbx";
  ScriptedUser user;
  std::function<void()> whileReading;
  std::string body;
};

TEST_F(RunObjectUnderChangeTest, TheMailboxCutAndRemovedWhileTheWindowIsOpen) {
  AgentHandle search = 0;
  KeptRecord first;
  ASSERT_EQ(StatusOk, findFirst(search, first)); // the search holds In.mbx mapped
  whileReading = [&] {
    ASSERT_EQ(0, truncate(box.c_str(), 0));
    ASSERT_EQ(0, unlink(box.c_str()));
  };
  EXPECT_EQ(StatusOk, run(first));
  EXPECT_EQ(std::vector<int32_t>{TUK_USER_MODAL_DIALOG}, shown());
  EXPECT_EQ("First body.\r\n", body);
  // The search passes over what is gone; the record now opens nothing.
  KeptRecord next;
  ASSERT_EQ(StatusOk, findNext(search, next));
  EXPECT_EQ(mail + "/Next.mbx", next.path);
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  whileReading = nullptr;
  EXPECT_EQ(StatusOpenFailed, run(first));
}

TEST_F(RunObjectUnderChangeTest, ARecordWhoseBytesChangedOrWentAsksForAReindex) {
  const StoreWalk found = walk();
  ASSERT_EQ(3u, found.records.size());
  // The same length, other bytes: the checksum no longer agrees.
  std::string bytes = readFile(box);
  bytes[found.records[0].offset + 20] ^= 0x20;
  writeFile(box, bytes);
  EXPECT_EQ(StatusOk, run(found.records[0]));
  // Cut short: the second message's range lies past the end.
  ASSERT_EQ(0, truncate(box.c_str(), found.records[1].offset + 4));
  EXPECT_EQ(StatusOk, run(found.records[1]));
  EXPECT_EQ((std::vector<int32_t>{TUK_USER_MESSAGE_BOX, TUK_USER_MESSAGE_BOX}), shown());
  // A folder or a pipe where the mailbox was: nothing to open.
  ASSERT_EQ(0, unlink(box.c_str()));
  makeDirs(box);
  EXPECT_EQ(StatusOpenFailed, run(found.records[0]));
  ASSERT_EQ(0, rmdir(box.c_str()));
  ASSERT_EQ(0, mkfifo(box.c_str(), 0600));
  EXPECT_EQ(StatusOpenFailed, run(found.records[0]));
  EXPECT_EQ(2u, user.events.size());
}

TEST_F(RunObjectUnderChangeTest, TheWindowOfAMessageStaysWhileTheMailboxIsRewritten) {
  const StoreWalk found = walk();
  ASSERT_EQ(3u, found.records.size());
  whileReading = [&] { writeFile(box, std::string(100000, 'z')); };
  EXPECT_EQ(StatusOk, run(found.records[1]));
  EXPECT_EQ("Second.\r\n", body);
  // Afterwards the record leads to other bytes: the box, and no window.
  whileReading = nullptr;
  EXPECT_EQ(StatusOk, run(found.records[1]));
  EXPECT_EQ((std::vector<int32_t>{TUK_USER_MODAL_DIALOG, TUK_USER_MESSAGE_BOX}), shown());
}
} // namespace
