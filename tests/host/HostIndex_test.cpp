// mhhost end to end on a generated store of each client: index, search by field and date,
// show, cat, and the runs after one mailbox changed.
#include "tests/host/HostFixture.h"
#include "tests/support/ClientStores.h"
#include "tests/support/Reference.h"
#include <ctime>
#include <unistd.h>

namespace {
const TestMessage kQuarterly = {
    "Thu, 15 Jan 1998 10:30:45 +0000",
    "Ann Lee <ann@example.org>",
    "team@example.org",
    "bob@example.org",
    "Quarterly report draft",
    "The draft of the quarterly report is ready.\nFrom what I hear the numbers are good.\n"};
const TestMessage kCorrections = {"Fri, 16 Jan 1998 08:15:02 +0000",
                                  "Bob Stone <bob@example.org>",
                                  "ann@example.org",
                                  "",
                                  "Corrections",
                                  "Two corrections on page three.\n"};
const TestMessage kLunch = {"Wed, 7 May 1997 11:02:33 +0000",
                            "Carol Diaz <carol@example.net>",
                            "ann@example.org",
                            "dave@example.com",
                            "Lunch on Friday",
                            "Are you free for lunch?\n"};
const TestMessage kAppended = {"Sat, 17 Jan 1998 09:00:00 +0000",
                               "Fay Wu <fay@example.org>",
                               "ann@example.org",
                               "",
                               "Appended later",
                               "A message that came after the first run.\n"};
const TestMessage kGarden = {"Mon, 2 Feb 1998 09:00:00 +0000",
                             "Erik Berg <erik@example.se>",
                             "garden@example.org",
                             "",
                             "Garden meeting",
                             "Meeting about tomatoes and compost.\n"};
const TestMessage kUndated = {"", "Dan <dan@example.com>", "ann@example.org",
                              "", "Undated note",          "No date here.\n"};

class HostStoreTest : public HostFixture, public ::testing::TestWithParam<std::string> {
protected:
  void SetUp() override {
    mail = dir.file("mail");
    inbox = mail + "/Inbox";
    work = mail + "/Folders/Work";
    inboxRanges = writeMailbox(client(), inbox, {kQuarterly, kCorrections, kLunch});
    writeMailbox(client(), work, {kGarden, kUndated});
    setRegistryValue(client(), "MailPath", mail);
  }
  const std::string &client() const { return GetParam(); }
  std::string inboxFile() const { return mailFileOf(client(), inbox); }
  std::string workFile() const { return mailFileOf(client(), work); }
  HostResult index(const std::vector<std::string> &more = {}) {
    std::vector<std::string> arguments = {"--client", client(), "index", "--stats", "--log"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return host(arguments);
  }
  std::string mail, inbox, work;
  std::vector<MessageRange> inboxRanges;
};

TEST_P(HostStoreTest, IndexesEveryMessageWithRecordFieldsAndTime) {
  const HostResult run = index();
  const uint64_t bytes = [&] {
    uint64_t sum = 0;
    for (const auto &mailbox : {mailboxOf(client(), {kQuarterly, kCorrections, kLunch}),
                                mailboxOf(client(), {kGarden, kUndated})})
      for (const MessageRange &range : mailbox.ranges)
        sum += range.length;
    return sum;
  }();
  EXPECT_TRUE(indexed(run, "5 new, 0 unchanged, 0 moved, 0 removed, 0 unreadable, 0 raw; 2 of 2 "
                           "mailboxes read; " +
                               std::to_string(bytes) + " bytes in "));
  const std::vector<JsonObject> hits = searchJson("subject:quarterly");
  ASSERT_EQ(1u, hits.size());
  const JsonObject &hit = hits.front();
  EXPECT_EQ(inboxFile(), hit.strings.at("path"));
  EXPECT_EQ(inboxRanges[0].offset, hit.numbers.at("offset"));
  EXPECT_EQ(inboxRanges[0].length, hit.numbers.at("length"));
  EXPECT_EQ(884860245, hit.numbers.at("time")); // 15 January 1998, 10:30:45 UTC
  EXPECT_EQ(884860245, hit.numbers.at("date"));
  EXPECT_EQ("Ann Lee <ann@example.org>", hit.strings.at("from"));
  EXPECT_EQ("Quarterly report draft", hit.strings.at("subject"));
  EXPECT_TRUE(holds(hit.strings.at("snippet"), "Quarterly"));
  EXPECT_EQ(client(), hit.strings.at("store"));
  EXPECT_EQ(inboxFile().substr(mail.size() + 1), hit.strings.at("folder"));
  EXPECT_EQ(11u, hit.strings.size() + hit.numbers.size());
  // list gives the same records straight from the agent, in its order.
  const HostResult list = hostOk({"--client", client(), "list", "--json"});
  const std::vector<std::string> lines = linesOf(list.out);
  ASSERT_EQ(5u, lines.size());
  JsonObject first;
  ASSERT_TRUE(parseJsonLine(lines[0], first)) << lines[0];
  const Mailbox written = mailboxOf(client(), {kQuarterly, kCorrections, kLunch});
  EXPECT_EQ(inboxFile(), first.strings.at("path"));
  EXPECT_EQ("Quarterly report draft", first.strings.at("subject"));
  EXPECT_EQ(referenceChecksum(written.bytes.substr(inboxRanges[0].offset, inboxRanges[0].length)),
            static_cast<uint32_t>(first.numbers.at("checksum")));
  JsonObject last;
  ASSERT_TRUE(parseJsonLine(lines[4], last));
  EXPECT_EQ(workFile(), last.strings.at("path"));
  EXPECT_EQ("Undated note", last.strings.at("subject"));
}

TEST_P(HostStoreTest, SearchesEachFieldAndDateRanges) {
  ASSERT_EQ(0, index().status);
  const auto subjects = [&](const std::string &query, const std::vector<std::string> &more = {}) {
    std::vector<std::string> found;
    for (const JsonObject &hit : searchJson(query, more))
      found.push_back(hit.strings.at("subject"));
    return found;
  };
  using Subjects = std::vector<std::string>;
  EXPECT_EQ(Subjects({"Lunch on Friday"}), subjects("from:carol"));
  EXPECT_EQ(Subjects({"Garden meeting"}), subjects("to:garden"));
  EXPECT_EQ(Subjects({"Lunch on Friday"}), subjects("cc:dave"));
  EXPECT_EQ(Subjects({"Garden meeting"}), subjects("body:tomatoes"));
  EXPECT_EQ(Subjects({"Quarterly report draft"}), subjects("\"numbers are good\""));
  // Conditions beside the words: folder, client, true date and id.
  EXPECT_EQ(2u, subjects("folder:work").size());
  EXPECT_EQ(Subjects({"Lunch on Friday"}), subjects("client:" + client() + " lunch"));
  const std::string otherClient = client() == "eudora" ? "pegasus" : "eudora";
  EXPECT_EQ(Subjects(), subjects("client:" + otherClient));
  EXPECT_EQ(Subjects({"Corrections"}), subjects("date:1998-01-16 ann"));
  EXPECT_EQ(Subjects({"Garden meeting"}), subjects("id:" + std::to_string(idOf("tomatoes"))));
  // Words given as several arguments must all be found.
  EXPECT_EQ("1\n", host({"search", "numbers", "good", "--count"}).out);
  // A word in a field is not found in another column.
  EXPECT_EQ(Subjects(), subjects("subject:carol"));
  EXPECT_EQ(Subjects({"Corrections"}),
            subjects("ann", {"--since", "1998-01-16", "--until", "1998-01-31"}));
  // A bare --until date takes in its whole day; --since a time is exact.
  EXPECT_EQ(Subjects({"Quarterly report draft"}),
            subjects("subject:quarterly OR subject:corrections", {"--until", "1998-01-15"}));
  EXPECT_EQ(Subjects(), subjects("subject:quarterly", {"--since", "1998-01-15 10:31"}));
  EXPECT_EQ(2u, subjects("ann OR dan OR garden", {"--limit", "2"}).size());
  // The message without a Date never has the agent's fixed date, 1 Feb 1971.
  EXPECT_EQ(Subjects(), subjects("undated", {"--until", "1971-02-01"}));
  // Newest first by default, oldest or by relevance on request; pages of
  // --limit from --offset; the number alone; ids or places for scripts.
  const Subjects byDate = {"Garden meeting", "Corrections", "Quarterly report draft",
                           "Lunch on Friday"};
  const std::string dated = "(ann OR garden) NOT undated";
  EXPECT_EQ(byDate, subjects(dated));
  EXPECT_EQ(Subjects(byDate.rbegin(), byDate.rend()), subjects(dated, {"--sort", "oldest"}));
  EXPECT_EQ(Subjects({"Corrections", "Quarterly report draft"}),
            subjects(dated, {"--limit", "2", "--offset", "1"}));
  EXPECT_EQ("4\n", host({"search", dated, "--count"}).out);
  const std::string ids = host({"search", "tomatoes", "--output", "ids"}).out;
  EXPECT_EQ(std::to_string(idOf("tomatoes")) + "\n", ids);
  const uint32_t gardenOffset = mailboxOf(client(), {kGarden, kUndated}).ranges[0].offset;
  EXPECT_EQ(workFile() + "\t" + std::to_string(gardenOffset) + "\n",
            host({"search", "tomatoes", "--output", "files"}).out);
  EXPECT_EQ(2, host({"search", "x", "--sort", "best"}).status);
  // Without --json: id, date, sender, subject, then the snippet with the matches marked.
  const HostResult plain = hostOk({"search", "tomatoes"});
  const std::vector<std::string> lines = linesOf(plain.out);
  ASSERT_EQ(2u, lines.size()) << plain.out;
  EXPECT_TRUE(holds(lines[0], "  1998-02-02 09:00  Erik Berg <erik@example.se>  Garden meeting"));
  EXPECT_TRUE(holds(lines[1], "[tomatoes]"));
}

TEST_P(HostStoreTest, ShowsTheViewEmailWindowAndCatsTheBody) {
  ASSERT_EQ(0, index().status);
  const std::string id = std::to_string(idOf("subject:quarterly"));
  const HostResult shown = hostOk({"show", id});
  EXPECT_EQ("To: team@example.org\nFrom: Ann Lee <ann@example.org>\nCC: bob@example.org\n"
            "Date: Thu, 15 Jan 1998 10:30:45 +0000\nSubject: Quarterly report draft\n"
            "Location: " +
                inboxFile() + "\n\n" + kQuarterly.body,
            shown.out);
  EXPECT_EQ(std::string::npos, shown.err.find("Enter")) << "nobody to ask without a terminal";
  // At a terminal the window stays until Enter.
  const HostResult typed = hostOk({"show", id}, "\n", Input::Terminal);
  EXPECT_EQ(shown.out, typed.out);
  EXPECT_TRUE(holds(typed.err, "Enter closes the window"));
  const HostResult body = hostOk({"cat", "--raw", id});
  EXPECT_EQ(bodyOf(client(), kQuarterly), body.out);
  // The other mailbox, deeper down, is reached as well.
  const HostResult other = host({"cat", "--raw", std::to_string(idOf("subject:undated"))});
  EXPECT_EQ(bodyOf(client(), kUndated), other.out);
}

TEST_P(HostStoreTest, RereadsOnlyTheMailboxThatChanged) {
  ASSERT_EQ(0, index().status);
  // Nothing changed: no walk, and the agent opens nothing.
  HostResult run = index();
  EXPECT_TRUE(indexed(run, "0 new, 5 unchanged, 0 moved, 0 removed, 0 unreadable, 0 raw; 0 of 2 "
                           "mailboxes read"));
  EXPECT_EQ(1u, linesWith(run.out, "walk: not needed").size());
  EXPECT_EQ(0u, linesWith(run.err, "findFirstObjectHandle").size()) << run.err;
  EXPECT_EQ(0u, linesWith(run.err, "openObject").size());
  // A message appended (in the same second as the last run: keepObject can't tell, the
  // mailbox file's state can): only the new message is opened.
  const Mailbox before = mailboxOf(client(), {kQuarterly, kCorrections, kLunch});
  const Mailbox appended = mailboxOf(client(), {kQuarterly, kCorrections, kLunch, kAppended});
  ASSERT_EQ(before.bytes, appended.bytes.substr(0, before.bytes.size()));
  appendFile(inboxFile(), appended.bytes.substr(before.bytes.size()));
  run = index();
  EXPECT_TRUE(indexed(run, "1 new, 5 unchanged, 0 moved, 0 removed, 0 unreadable, 0 raw; 1 of 2 "
                           "mailboxes read"));
  EXPECT_EQ(
      std::vector<std::string>({"read " + inboxFile() +
                                ": 1 new, 3 unchanged, 0 moved, 0 removed, 0 unreadable, 0 raw"}),
      linesWith(run.out, "read "));
  EXPECT_EQ(1u, linesWith(run.err, ": openObject").size()) << run.err;
  std::vector<JsonObject> hits = searchJson("subject:appended");
  ASSERT_EQ(1u, hits.size());
  EXPECT_EQ(appended.ranges[3].offset, hits[0].numbers.at("offset"));
  // Compacted: the second message is gone and the two behind it moved. They keep their ids
  // and are not read again; the one that is gone answers that it is.
  const long long lunchId = idOf("subject:lunch"), correctionsId = idOf("subject:corrections");
  const Mailbox compacted = mailboxOf(client(), {kQuarterly, kLunch, kAppended});
  writeFile(inboxFile(), compacted.bytes);
  run = index();
  EXPECT_TRUE(indexed(run, "0 new, 3 unchanged, 2 moved, 1 removed, 0 unreadable, 0 raw; 1 of 2 "
                           "mailboxes read"));
  EXPECT_EQ(lunchId, idOf("subject:lunch"));
  EXPECT_TRUE(
      refused(host({"cat", std::to_string(correctionsId)}), 1, "is no longer in the store"));
  EXPECT_EQ(1u, linesWith(run.out, "read ").size());
  EXPECT_TRUE(searchJson("subject:corrections").empty());
  hits = searchJson("subject:lunch");
  ASSERT_EQ(1u, hits.size());
  EXPECT_EQ(compacted.ranges[1].offset, hits[0].numbers.at("offset"));
  EXPECT_EQ(compacted.ranges[1].length, hits[0].numbers.at("length"));
  const HostResult shown = hostOk({"show", std::to_string(hits[0].numbers.at("id"))});
  EXPECT_EQ(1u, linesWith(shown.out, "Subject: Lunch on Friday").size()) << shown.out;
  // Deleted: its objects go, the other mailbox's stay untouched.
  ASSERT_EQ(0, unlink(inboxFile().c_str()));
  ASSERT_EQ(0, unlink(controlFileOf(client(), inbox).c_str()));
  run = index();
  EXPECT_TRUE(indexed(run, "0 new, 2 unchanged, 0 moved, 3 removed, 0 unreadable, 0 raw; 1 of 2 "
                           "mailboxes read"));
  EXPECT_TRUE(searchJson("subject:quarterly").empty());
  EXPECT_EQ(1u, searchJson("subject:garden").size());
  EXPECT_EQ(0u, linesWith(run.err, ": openObject").size()) << "a record the walk lost is gone";
  // A new mailbox: it alone is read.
  writeMailbox(client(), mail + "/Folders/Later", {kAppended});
  run = index();
  EXPECT_TRUE(indexed(run, "1 new, 2 unchanged, 0 moved, 0 removed"));
  EXPECT_EQ(
      std::vector<std::string>({"read " + mailFileOf(client(), mail + "/Folders/Later") +
                                ": 1 new, 0 unchanged, 0 moved, 0 removed, 0 unreadable, 0 raw"}),
      linesWith(run.out, "read "));
  EXPECT_EQ(1u, linesWith(run.err, ": openObject").size()) << run.err;
}

INSTANTIATE_TEST_SUITE_P(EveryClient, HostStoreTest, ::testing::ValuesIn(kClientNames));

// A record whose bytes still stand though the walk no longer gives it is gone, as a fresh index
// would not hold it; the mailbox is not read again on the next run.
TEST(HostEudoraTest, ARecordTheWalkNoLongerGivesIsDroppedThoughItStillOpens) {
  HostFixture host;
  const std::string stem = host.dir.file("mail/In");
  host.indexMailbox({kCorrections, kLunch});
  // The second delimiter becomes text: the walk gives one message over both, while each old
  // record still finds its bytes unchanged.
  std::string bytes = readFile(mailFileOf("eudora", stem));
  bytes.replace(bytes.find("From ???@???", 1), 1, "X");
  writeFile(mailFileOf("eudora", stem), bytes);
  setFileTime(mailFileOf("eudora", stem), time(nullptr) + 100);
  EXPECT_TRUE(indexed(host.host({"--client", "eudora", "index"}),
                      "1 new, 0 unchanged, 0 moved, 2 removed"));
  const HostResult run = host.host({"--client", "eudora", "index", "--stats"});
  EXPECT_EQ(1u, linesWith(run.out, "walk: not needed").size()) << run.out;
  EXPECT_TRUE(indexed(run, "0 new, 1 unchanged, 0 moved, 0 removed"));
}
} // namespace
