// RunObject while the mailbox changes: the View Email window shows the message as it was
// found, whatever becomes of the mailbox while the person reads it, and a record whose bytes
// have changed or gone gets the box that asks for a reindex.
#include "tests/hostile/HostileStore.h"

#include "platform/WindowApi.h"
#include "resources/resource.h"
#include "tests/support/AgentSession.h"

#include <gtest/gtest.h>

#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The person at the screen: notes what the agent showed, reads the message window, and does
// `whileReading` before letting it close.
struct Person {
  std::vector<int32_t> shown; // the kinds of event, in order
  std::string body;
  std::function<void()> whileReading;

  static int32_t answer(void *context, const TukUserEvent *event) {
    Person &person = *static_cast<Person *>(context);
    person.shown.push_back(event->kind);
    if (event->kind == TUK_USER_MODAL_DIALOG) {
      if (person.whileReading)
        person.whileReading();
      char text[4096] = "";
      tukWindowGetText(tukWindowFindChild(event->window, IDC_VIEW_BODY), text, sizeof text);
      person.body = text;
    }
    return event->kind == TUK_USER_MESSAGE_BOX ? TUK_ID_OK : 0;
  }
};

class RunObjectUnderChangeTest : public HostileStoreTest {
protected:
  void SetUp() override {
    HostileStoreTest::SetUp();
    box = mail + "/In.mbx";
    writeFile(box, eudoraMessage("one", "First body.\r\n") + eudoraMessage("two", "Second.\r\n"));
    writeFile(mail + "/In.toc", "");
    writeFile(mail + "/Next.mbx", eudoraMessage("next"));
    writeFile(mail + "/Next.toc", "");
    tukSetUser(Person::answer, &person);
  }
  void TearDown() override {
    tukSetUser(nullptr, nullptr);
    HostileStoreTest::TearDown();
  }

  int32_t run(const KeptRecord &record) {
    RecordBuffer buffer(record.path, record.offset, record.length, record.checksum, record.stamp);
    return entries().RunObject(buffer.get());
  }

  std::string box;
  Person person;
};

TEST_F(RunObjectUnderChangeTest, TheMailboxCutAndRemovedWhileTheWindowIsOpen) {
  AgentHandle search = 0;
  KeptRecord first;
  ASSERT_EQ(StatusOk, findFirst(search, first)); // the search holds In.mbx mapped
  person.whileReading = [&] {
    ASSERT_EQ(0, truncate(box.c_str(), 0));
    ASSERT_EQ(0, unlink(box.c_str()));
  };
  EXPECT_EQ(StatusOk, run(first));
  EXPECT_EQ(std::vector<int32_t>{TUK_USER_MODAL_DIALOG}, person.shown);
  EXPECT_EQ("First body.\r\n", person.body);
  // The search passes over what is gone; the record now opens nothing.
  KeptRecord next;
  ASSERT_EQ(StatusOk, findNext(search, next));
  EXPECT_EQ(mail + "/Next.mbx", next.path);
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  person.whileReading = nullptr;
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
  EXPECT_EQ((std::vector<int32_t>{TUK_USER_MESSAGE_BOX, TUK_USER_MESSAGE_BOX}), person.shown);
  // A folder or a pipe where the mailbox was: nothing to open.
  ASSERT_EQ(0, unlink(box.c_str()));
  makeDirs(box);
  EXPECT_EQ(StatusOpenFailed, run(found.records[0]));
  ASSERT_EQ(0, rmdir(box.c_str()));
  ASSERT_EQ(0, mkfifo(box.c_str(), 0600));
  EXPECT_EQ(StatusOpenFailed, run(found.records[0]));
  EXPECT_EQ(2u, person.shown.size());
}

TEST_F(RunObjectUnderChangeTest, TheWindowOfAMessageStaysWhileTheMailboxIsRewritten) {
  const StoreWalk found = walk();
  ASSERT_EQ(3u, found.records.size());
  person.whileReading = [&] { writeFile(box, std::string(100000, 'z')); };
  EXPECT_EQ(StatusOk, run(found.records[1]));
  EXPECT_EQ("Second.\r\n", person.body);
  // Afterwards the record leads to other bytes: the box, and no window.
  person.whileReading = nullptr;
  EXPECT_EQ(StatusOk, run(found.records[1]));
  EXPECT_EQ((std::vector<int32_t>{TUK_USER_MODAL_DIALOG, TUK_USER_MESSAGE_BOX}), person.shown);
}

} // namespace
