// A mailbox that another process truncates, rewrites or lengthens while a search holds it
// mapped: the search goes on or ends with a documented status, and never takes the host down.
#include "tests/hostile/HostileStore.h"

#include "tests/support/AgentSession.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <random>
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

class MappedMailboxTest : public HostileStoreTest {
protected:
  void SetUp() override {
    HostileStoreTest::SetUp();
    first = mail + "/A.mbx";
    writeFile(first, bigMailbox("a", 8));
    writeFile(mail + "/A.toc", "");
    writeFile(mail + "/B.mbx", eudoraMessage("b"));
    writeFile(mail + "/B.toc", "");
  }

  // Starts a search that holds A.mbx mapped at its first message.
  AgentHandle startOnFirstMailbox() {
    AgentHandle search = 0;
    KeptRecord record;
    EXPECT_EQ(StatusOk, findFirst(search, record));
    EXPECT_EQ(first, record.path);
    return search;
  }

  // The rest of the search: the mailboxes of the records it gives, in order.
  std::vector<std::string> finish(AgentHandle search) {
    std::vector<std::string> paths;
    KeptRecord record;
    int32_t status;
    while ((status = findNext(search, record)) == StatusOk && paths.size() < 100)
      paths.push_back(record.path);
    EXPECT_EQ(StatusNoMoreObjects, status);
    EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
    return paths;
  }

  std::string first;
};

TEST_F(MappedMailboxTest, CutShortTheRestOfTheMailboxIsPassedOver) {
  for (const off_t size : {off_t{kPage}, off_t{0}, off_t{3 * kPage + 100}}) {
    writeFile(first, bigMailbox("a", 8));
    const AgentHandle search = startOnFirstMailbox();
    ASSERT_EQ(0, truncate(first.c_str(), size));
    const std::vector<std::string> rest = finish(search);
    // Messages that still lie inside the file may come; the next mailbox comes in any case.
    ASSERT_FALSE(rest.empty()) << size;
    EXPECT_EQ(mail + "/B.mbx", rest.back()) << size;
    EXPECT_LE(rest.size(), 1u + 3u) << size;
  }
}

TEST_F(MappedMailboxTest, RewrittenInPlaceTheSearchReadsTheNewBytes) {
  const AgentHandle search = startOnFirstMailbox();
  // A client compacting in place: the same file, cut to nothing and written anew (longer, so
  // that every range of the old size lies inside the new bytes).
  writeFile(first, bigMailbox("new", 3) + std::string(10 * kPage, 'z'));
  std::vector<KeptRecord> records;
  KeptRecord record;
  while (findNext(search, record) == StatusOk && records.size() < 100)
    records.push_back(record);
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  ASSERT_FALSE(records.empty());
  EXPECT_EQ(mail + "/B.mbx", records.back().path);
  // What the search gave after the rewrite is what the file holds now: every record reopens.
  for (const KeptRecord &kept : records)
    EXPECT_EQ(StatusOk, reopen(kept)) << kept.path << " at " << kept.offset;
}

TEST_F(MappedMailboxTest, ReplacedByRenameTheSearchGoesOnInTheOldFile) {
  const AgentHandle search = startOnFirstMailbox();
  writeFile(mail + "/A.new", eudoraMessage("replacement"));
  ASSERT_EQ(0, rename((mail + "/A.new").c_str(), first.c_str()));
  const std::vector<std::string> rest = finish(search);
  // Seven more of the old mapping, then B.
  ASSERT_EQ(8u, rest.size());
  EXPECT_EQ(mail + "/B.mbx", rest.back());
}

TEST_F(MappedMailboxTest, LengthenedTheSearchSeesTheMailboxAsItWasMapped) {
  const AgentHandle search = startOnFirstMailbox();
  appendFile(first, bigMailbox("late", 4));
  const std::vector<std::string> rest = finish(search);
  ASSERT_EQ(8u, rest.size());
  EXPECT_EQ(mail + "/B.mbx", rest.back());
  // A new search sees the new messages.
  EXPECT_EQ(13u, walk().records.size());
}

TEST_F(MappedMailboxTest, AnOpenObjectOwesNothingToItsMailbox) {
  AgentHandle search = 0;
  KeptRecord record;
  ASSERT_EQ(StatusOk, findFirst(search, record));
  RecordBuffer buffer(record.path, record.offset, record.length, record.checksum);
  AgentHandle object = 0;
  int32_t time = 0;
  ASSERT_EQ(StatusOk, entries().openObject(&object, buffer.get(), &time));
  ASSERT_EQ(0, truncate(first.c_str(), 0));
  ASSERT_EQ(0, unlink(first.c_str()));
  std::string body;
  char piece[1000];
  uint32_t got = 0;
  while (entries().readObject(object, piece, sizeof piece, &got) == StatusOk)
    body.append(piece, got);
  EXPECT_EQ(std::string(kPage, 'a') + "\r\n", body);
  EXPECT_EQ(StatusOk, entries().closeObject(object));
  // The record no longer leads anywhere; the search passes over what is gone.
  EXPECT_EQ(StatusMailFileFailed, reopen(record));
  EXPECT_EQ(std::vector<std::string>{mail + "/B.mbx"}, finish(search));
}

// Another thread cuts, rewrites and lengthens the mailboxes at random while the host walks
// and reopens: every answer is one the agent documents, and the walk always ends.
TEST_F(MappedMailboxTest, AMailboxChurningUnderManyWalks) {
  std::atomic<bool> stop{false};
  std::thread churn([&] {
    std::mt19937 random(11);
    const std::string full = bigMailbox("c", 12);
    while (!stop) {
      const std::string &path = random() % 4 == 0 ? mail + "/B.mbx" : first;
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
    if (found.firstStatus == StatusOk) {
      EXPECT_EQ(StatusNoMoreObjects, found.lastStatus);
    }
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
