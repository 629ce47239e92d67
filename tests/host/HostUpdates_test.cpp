// Which stores an index run reads, and the ids of messages that move or change between runs.
// (That a run's index equals a fresh one is HostModel_test's.)
#include "tests/host/HostFixture.h"
#include <algorithm>
#include <cstdio>

namespace {
// What config set up is what index reads, indexed before or not; status shows it. The second
// store is a Thunderbird profile read by the Netscape agent: mbox files without an extension
// beside .msf files, subfolders in .sbd folders, a blank in the directory's name.
TEST(HostStoresTest, IndexReadsEveryStoreConfigSetUpAndStatusListsThem) {
  HostFixture fixture;
  const std::string second = "Software\\Tuk\\Agents\\MHNetscape\\Thunderbird";
  const std::string local = fixture.dir.file("profile/Local Folders");
  writeMailbox("netscape", fixture.dir.file("one/Inbox"), {{"", "a@b.c", "", "", "one", "x\n"}});
  const std::vector<std::pair<std::string, std::vector<TestMessage>>> folders = {
      {"Inbox", {{"", "a@b.c", "", "", "two", "y\n"}}},
      {"Archives.sbd/2024", {{"", "a@b.c", "", "", "three", "z\n"}}},
      {"Trash", {}},
      {"Archives", {}}};
  for (const auto &folder : folders) {
    writeFile(local + "/" + folder.first, mailboxOf("netscape", folder.second).bytes);
    writeFile(local + "/" + folder.first + ".msf", "// <!-- <mdb:mork:z v=\"1.4\"/> -->\n");
  }
  writeFile(local + "/msgFilterRules.dat", "version=\"9\"\n");
  fixture.hostOk(
      {"config", "--client", "netscape", "--mail-dir", fixture.dir.file("one"), "--yes"});
  fixture.hostOk({"--key", second, "config", "--mail-dir", local, "--ctrl-ext", ".msf", "--yes"});
  HostResult status = fixture.host({"status"});
  EXPECT_TRUE(holds(status.out, "netscape\n  mail:     " + fixture.dir.file("one") +
                                    "\n  messages: 0\n  indexed:  never"));
  EXPECT_TRUE(holds(status.out, "not made yet"));
  EXPECT_TRUE(indexed(fixture.host({"index"}), ""));
  EXPECT_EQ(3u, fixture.searchJson("a").size());
  const std::vector<JsonObject> hits = fixture.searchJson("three", {"--key", second});
  ASSERT_EQ(1u, hits.size());
  EXPECT_EQ(local + "/Archives.sbd/2024", hits[0].strings.at("path"));
  EXPECT_TRUE(fixture.searchJson("one", {"--key", second}).empty());
  status = fixture.host({"status"});
  EXPECT_TRUE(holds(status.out, second + "\n  mail:     " + local + "\n  messages: 2"));
  EXPECT_EQ(std::string::npos, status.out.find("never")) << status.out;
}

const TestMessage kPets = {"Thu, 15 Jan 1998 10:30:45 +0000",
                           "Ann <ann@example.org>",
                           "bob@example.org",
                           "",
                           "Pets",
                           "cat dog\n"};
const TestMessage kPlants = {"Fri, 16 Jan 1998 10:30:45 +0000",
                             "Bob <bob@example.org>",
                             "ann@example.org",
                             "",
                             "Plants",
                             "fern moss\n"};

class HostIdsTest : public HostFixture, public ::testing::Test {
protected:
  void SetUp() override { indexMailbox({kPets, kPlants}); }
  HostResult index() { return host({"--client", "eudora", "index"}); }
};

TEST_F(HostIdsTest, AMailboxRenamedAndMovedKeepsItsIdsAndIsNotReadAgain) {
  const long long pets = idOf("cat"), plants = idOf("fern");
  makeDirs(dir.file("mail/Archive"));
  for (const char *extension : {".mbx", ".toc"})
    ASSERT_EQ(0, std::rename(dir.file(std::string("mail/In") + extension).c_str(),
                             dir.file(std::string("mail/Archive/Old") + extension).c_str()));
  EXPECT_TRUE(indexed(index(), "0 new, 0 unchanged, 2 moved, 0 removed"));
  EXPECT_EQ(pets, idOf("cat"));
  EXPECT_EQ(plants, idOf("fern"));
  EXPECT_EQ(searchJson("cat").front().strings.at("path"), dir.file("mail/Archive/Old.mbx"));
}

// Bytes swapped four apart keep the agent's checksum, an XOR of words: the host's own hash
// of the bytes still tells the edit. Until the next run the old hit stands, saying that its
// mailbox changed; then the edited message is read again under a new id.
TEST_F(HostIdsTest, AnEditTheChecksumCannotSeeIsReadAgainUnderANewId) {
  const long long pets = idOf("cat");
  std::string bytes = readFile(dir.file("mail/In.mbx"));
  const size_t at = bytes.find("cat dog");
  std::swap(bytes[at], bytes[at + 4]); // "dat cog"
  writeFile(dir.file("mail/In.mbx"), bytes);
  EXPECT_EQ(0u, searchJson("cat").front().strings.at("snippet").find(
                    "(its mailbox was written since the index was made"));
  EXPECT_TRUE(indexed(index(), "1 new, 1 unchanged, 0 moved, 1 removed"));
  EXPECT_EQ(0, idOf("cat"));
  EXPECT_GT(idOf("cog"), pets);
  // The old text's words stay in the full-text table until it is made anew: no order finds them.
  for (const char *order : {"relevance", "oldest"})
    EXPECT_EQ(0u, searchJson("cat", {"--sort", order}).size()) << order;
  EXPECT_TRUE(refused(host({"show", std::to_string(pets)}), 1, "is no longer in the store"));
}

// The full-text table can't take a removed message's words out: they stay, found by no
// search, until they outnumber a quarter of the messages and a thousand; then every message
// is read again into a new table, and ids stay.
TEST_F(HostIdsTest, ManyRemovedMessagesMakeTheFullTextIndexAnew) {
  std::vector<TestMessage> many(1100, kPets);
  for (size_t i = 0; i < many.size(); ++i)
    many[i].body = "note" + std::to_string(i) + " gone\n";
  writeMailbox("eudora", dir.file("mail/Old"), many);
  ASSERT_EQ(0, index().status);
  const long long plants = idOf("fern");
  ASSERT_EQ(0, std::remove(dir.file("mail/Old.mbx").c_str()));
  ASSERT_EQ(0, std::remove(dir.file("mail/Old.toc").c_str()));
  const HostResult run = index();
  const std::vector<std::string> lines = linesOf(run.out);
  ASSERT_EQ(2u, lines.size()) << run.out;
  EXPECT_EQ(0u, lines[0].find("indexed: 0 new, 2 unchanged, 0 moved, 1100 removed")) << run.out;
  EXPECT_EQ(0u, lines[1].find("full-text index made anew: 1100 rows of removed messages "
                              "dropped, 2 messages read again, 0 no longer readable"))
      << run.out;
  EXPECT_EQ(plants, idOf("fern"));
  EXPECT_EQ(0u, searchJson("gone").size());
  EXPECT_EQ("2\n", host({"search", "--count", "cat OR fern"}).out);
}

// A search newest first reads the runs of ids that hold the newest mail first and stops once
// no other run can change its page: whatever order the dates come in, the page is the one a
// sort of every hit gives.
TEST_F(HostIdsTest, NewestFirstHoldsWhateverOrderTheDatesComeIn) {
  std::vector<TestMessage> many(3000, kPets);
  uint64_t state = 7;
  for (size_t i = 0; i < many.size(); ++i) {
    state = state * 6364136223846793005ull + 1442695040888963407ull;
    const unsigned day = 1 + (state >> 33) % 28, minute = (state >> 40) % 1440,
                   year = (i < 1500 ? 2001 : 1995) + (state >> 50) % 3;
    char date[64];
    std::snprintf(date, sizeof date, "%u Feb %u %02u:%02u:00 +0000", day, year, minute / 60,
                  minute % 60);
    many[i].date = date;
  }
  many[2900].date = "1 Mar 2010 00:00:00 +0000"; // the newest, among the oldest
  writeMailbox("eudora", dir.file("mail/Many"), many);
  ASSERT_EQ(0, index().status);
  const auto ids = [this](const std::string &order, const std::string &offset) {
    return linesOf(host({"--client", "eudora", "search", "cat", "--sort", order, "--limit", "4000",
                         "--offset", offset, "--output", "ids"})
                       .out);
  };
  const std::vector<std::string> newest = ids("newest", "0"), oldest = ids("oldest", "0");
  ASSERT_EQ(3001u, newest.size());
  EXPECT_EQ(idOf("cat date:2010"), std::stoll(newest.front()));
  EXPECT_TRUE(std::equal(newest.begin(), newest.end(), oldest.rbegin()));
  EXPECT_EQ(std::vector<std::string>(newest.begin() + 1234, newest.end()), ids("newest", "1234"));
  EXPECT_EQ(
      std::vector<std::string>(newest.begin() + 5, newest.begin() + 25),
      linesOf(
          host({"--client", "eudora", "search", "cat", "--offset", "5", "--output", "ids"}).out));
}
} // namespace
