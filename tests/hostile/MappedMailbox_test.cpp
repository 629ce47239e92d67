// A mailbox that another process appends to, rewrites, replaces, cuts or removes while the agent
// holds it: a search that holds it mapped goes on, a record kept from before opens only while its
// bytes stand, an object already open reads on, a new walk sees the mailbox as it is now, RunObject
// shows the window, the box that asks for a reindex or nothing, and nothing takes the host down.
#include "tests/platform/ScriptedUser.h"
#include "tests/support/AgentSession.h"
#include "tests/support/AgentStore.h"
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {
constexpr size_t kPage = 4096;

// A mailbox of `count` messages of about a page each, so that cutting it frees whole pages.
std::string bigMailbox(const std::string &tag, int count) {
  std::string box;
  for (int at = 0; at < count; ++at)
    box += eudoraMessage(tag + std::to_string(at), std::string(kPage, 'a' + at % 26) + "\r\n");
  return box;
}

// A change to A.mbx, made while a search holds it mapped at its first message, an object of
// that message is open and openObject keeps the mailbox for the next open; and what follows.
struct Change { // NOLINT(clang-analyzer-optin.performance.Padding): fields in the table's order
  const char *name;
  std::function<void(const std::string &box)> make;
  int32_t keptRecord;         // openObject of the first message's record from before
  size_t restLeast, restMost; // records the search gives after the change, B's last among them
  int32_t restOpen;           // openObject of those of A.mbx
  size_t walkAfter;           // records of a new walk
};

void PrintTo(const Change &change, std::ostream *out) {
  *out << change.name;
}

const Change kChanges[] = {
    {"Appended", [](const std::string &box) { appendFile(box, bigMailbox("late", 4)); }, StatusOk,
     8, 8, StatusOk, 13},
    {"AByteWrittenInPlace",
     [](const std::string &box) {
       std::fstream file(box, std::ios::in | std::ios::out | std::ios::binary);
       file.seekp(100);
       file.put('A');
     },
     StatusOpenFailed, 8, 8, StatusOk, 9},
    // A client compacting in place: cut to nothing and written anew, longer, so that every
    // range of the old size lies inside the new bytes.
    {"RewrittenLonger",
     [](const std::string &box) {
       writeFile(box, bigMailbox("new", 3) + std::string(10 * kPage, 'z'));
     },
     StatusOpenFailed, 1, 100, StatusOk, 4},
    // A client compacting into a new file renamed over the old one: the same name and size,
    // other bytes. The search goes on in the file it mapped.
    {"ReplacedByARename",
     [](const std::string &box) {
       writeFile(box + ".new", bigMailbox("r", 8));
       ASSERT_EQ(0, std::rename((box + ".new").c_str(), box.c_str()));
     },
     StatusOpenFailed, 8, 8, StatusOpenFailed, 9},
    // Messages that still lie inside the file may come; the next mailbox comes in any case.
    {"CutToAPage", [](const std::string &box) { ASSERT_EQ(0, truncate(box.c_str(), kPage)); },
     StatusOpenFailed, 1, 4, StatusOk, 2},
    {"CutToNothing", [](const std::string &box) { ASSERT_EQ(0, truncate(box.c_str(), 0)); },
     StatusMailFileFailed, 1, 4, StatusOk, 1},
    {"CutInsideItsThirdMessage",
     [](const std::string &box) { ASSERT_EQ(0, truncate(box.c_str(), 3 * kPage + 100)); }, StatusOk,
     1, 4, StatusOk, 4},
    {"Removed",
     [](const std::string &box) {
       ASSERT_EQ(0, truncate(box.c_str(), 0));
       ASSERT_EQ(0, unlink(box.c_str()));
     },
     StatusMailFileFailed, 1, 1, StatusOk, 1},
    // A folder or a pipe where the mailbox was: the search goes on in the file it mapped, and
    // nothing opens by the name.
    {"ReplacedByAFolder",
     [](const std::string &box) {
       ASSERT_EQ(0, unlink(box.c_str()));
       makeDirs(box);
     },
     StatusMailFileFailed, 8, 8, StatusMailFileFailed, 1},
    {"ReplacedByAPipe",
     [](const std::string &box) {
       ASSERT_EQ(0, unlink(box.c_str()));
       ASSERT_EQ(0, mkfifo(box.c_str(), 0600));
     },
     StatusMailFileFailed, 8, 8, StatusMailFileFailed, 1},
};

std::vector<int32_t> kindsOf(const std::vector<ScriptedUser::Event> &events) {
  std::vector<int32_t> kinds;
  for (const ScriptedUser::Event &event : events)
    kinds.push_back(event.kind);
  return kinds;
}

class MappedMailboxTest : public AgentStoreTest {
protected:
  void SetUp() override {
    AgentStoreTest::SetUp();
    mailbox("A", bigMailbox("a", 8));
    mailbox("B", eudoraMessage("b"));
  }
  const std::string box = mail + "/A.mbx";
};

class MailboxChangeTest : public MappedMailboxTest, public ::testing::WithParamInterface<Change> {};

TEST_P(MailboxChangeTest, EachHolderSeesTheMailboxAsItShould) {
  const Change &change = GetParam();
  AgentHandle search = 0, object = 0;
  KeptRecord first, record;
  ASSERT_EQ(StatusOk, findFirst(search, first));
  ASSERT_EQ(box, first.path);
  ASSERT_EQ(StatusOk, openRecord(entries(), first, object));
  ASSERT_EQ(StatusOk, reopen(first));
  const std::string before = readFile(box);
  change.make(box);
  EXPECT_EQ(std::string(kPage, 'a') + "\r\n", readAndClose(entries(), object));
  EXPECT_EQ(change.keptRecord, reopen(first));
  // RunObject on it: the message's window while its bytes stand, the box that asks for a
  // reindex when they changed, nothing when the mailbox can't be opened.
  {
    ScriptedUser user;
    RecordBuffer kept(first.path, first.offset, first.length, first.checksum, first.stamp);
    const bool gone = change.keptRecord == StatusMailFileFailed;
    EXPECT_EQ(gone ? StatusOpenFailed : StatusOk, entries().RunObject(kept.get()));
    const int32_t shown =
        change.keptRecord == StatusOk ? TUK_USER_MODAL_DIALOG : TUK_USER_MESSAGE_BOX;
    EXPECT_EQ(gone ? std::vector<int32_t>{} : std::vector<int32_t>{shown}, kindsOf(user.events));
  }
  std::vector<KeptRecord> rest;
  int32_t status;
  while ((status = findNext(search, record)) == StatusOk && rest.size() < 100)
    rest.push_back(record);
  EXPECT_EQ(StatusNoMoreObjects, status);
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  ASSERT_FALSE(rest.empty());
  EXPECT_EQ(mail + "/B.mbx", rest.back().path);
  EXPECT_GE(rest.size(), change.restLeast);
  EXPECT_LE(rest.size(), change.restMost);
  for (const KeptRecord &given : rest)
    EXPECT_EQ(given.path == box ? change.restOpen : StatusOk, reopen(given))
        << given.path << " at " << given.offset;
  // Every record of a new walk opens, to the body that ends its bytes as they are now.
  const std::vector<KeptRecord> now = walkStore(entries());
  EXPECT_EQ(change.walkAfter, now.size());
  for (const KeptRecord &kept : now) {
    const std::string bytes = readFile(kept.path).substr(kept.offset, kept.length);
    ASSERT_LE(kept.body.size(), bytes.size());
    EXPECT_EQ(bytes.substr(bytes.size() - kept.body.size()), kept.body) << kept.offset;
  }
  // The old bytes back under the old name: the kept record opens again.
  std::filesystem::remove(box);
  writeFile(box, before);
  EXPECT_EQ(StatusOk, reopen(first));
}

INSTANTIATE_TEST_SUITE_P(Changes, MailboxChangeTest, ::testing::ValuesIn(kChanges),
                         [](const auto &info) { return std::string(info.param.name); });

// Another thread cuts, rewrites and lengthens the mailboxes at random while the host walks
// and reopens: every answer is one the agent documents, and the walk always ends.
TEST_F(MappedMailboxTest, AMailboxChurningUnderManyWalks) {
  std::atomic<bool> stop{false};
  std::thread churn([&] {
    std::mt19937 random(11);
    const std::string full = bigMailbox("c", 12);
    while (!stop) {
      const std::string &path = random() % 4 == 0 ? mail + "/B.mbx" : box;
      const int fd = open(path.c_str(), O_WRONLY);
      if (fd < 0)
        continue;
      switch (random() % 3) {
      case 0:
        (void)!ftruncate(fd, static_cast<off_t>(random() % full.size()));
        break;
      case 1:
        (void)!pwrite(fd, full.data(), full.size(), 0);
        break;
      default:
        (void)!ftruncate(fd, static_cast<off_t>(random() % kPage));
        (void)!pwrite(fd, full.data(), random() % full.size(), 0);
        break;
      }
      close(fd);
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 500));
    }
  });
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  int walks = 0;
  while (std::chrono::steady_clock::now() < end) {
    const StoreWalk found = walk(1000);
    EXPECT_TRUE(found.firstStatus == StatusOk || found.firstStatus == StatusNoMoreObjects);
    EXPECT_TRUE(found.firstStatus != StatusOk || found.lastStatus == StatusNoMoreObjects);
    EXPECT_LT(found.records.size(), 1000u);
    for (const KeptRecord &record : found.records) {
      const int32_t status = reopen(record);
      EXPECT_TRUE(status == StatusOk || status == StatusOpenFailed ||
                  status == StatusMailFileFailed)
          << status;
    }
    ++walks;
  }
  stop = true;
  churn.join();
  EXPECT_GT(walks, 0);
}
} // namespace
