// mhhost reads mail as a person does: a Netscape store with one message of each kind that
// raw bodies hide (base64, quoted-printable, 8-bit, HTML, encoded words, zones, no dates,
// MIME trees) is found by its words and shown decoded.
#include "tests/host/HostFixture.h"
#include <sqlite3.h>

namespace {
class HostReaderTest : public HostFixture, public ::testing::Test {
protected:
  void SetUp() override {
    writeFile(dir.file("ns/Inbox"), readFile(TUK_SOURCE_DIR "/tests/host/mail/decoding.mbox"));
    writeFile(dir.file("ns/Inbox.snm"), std::string(64, '\0'));
    hostOk({"config", "--client", "netscape", "--mail-dir", dir.file("ns"), "--yes"});
    ASSERT_TRUE(indexed(host({"index", "--client", "netscape"}),
                        "8 new, 0 unchanged, 0 moved, 0 removed, 0 unreadable, 0 raw"));
  }
  // The one hit of `query`.
  JsonObject only(const std::string &query) {
    const std::vector<JsonObject> hits = searchJson(query);
    EXPECT_EQ(hits.size(), 1u) << query;
    return hits.empty() ? JsonObject() : hits.front();
  }
};

TEST_F(HostReaderTest, FindsEveryDecodedWordAndNoneOfTheEncoding) {
  // Each subject, and the queries that find its message alone.
  const std::pair<const char *, std::vector<const char *>> found[] = {
      {"base64 text", {"xylophone"}},
      {"quoted-printable", {"Käsekuchen", "kasekuchen", "hippopotamus"}},
      {"undeclared eight bit", {"Müller"}},
      {"html only", {"aardvark"}},
      {"Überweisung", {"Überweisung", "from:Jörg"}},
      {"alternative with attachment", {"narwhal", "pangolin", "wombat", "attachment:resume"}},
  };
  for (const auto &[subject, queries] : found)
    for (const char *query : queries)
      EXPECT_EQ(only(query).strings["subject"], subject) << query;
  // Encodings, markup and the HTML alternative of a plain part are not text.
  for (const char *absent :
       {"C3", "hippopota", "color", "nbsp", "tagword", "walrus", "UTF", "w5xiZXJ3ZWlzdW5n"})
    EXPECT_TRUE(searchJson(absent).empty()) << absent;
}

TEST_F(HostReaderTest, DatesAreTrueTimesWithTheSendersZoneOrTheDelimiterLine) {
  // 10:30:45 at -0500 is 15:30:45 UTC.
  EXPECT_EQ(only("xylophone").numbers["date"], 884878245);
  // No Date header: the delimiter line's time, which the client wrote in local time.
  struct tm local = {};
  local.tm_year = 98, local.tm_mon = 0, local.tm_mday = 20, local.tm_hour = 8, local.tm_min = 15;
  local.tm_isdst = -1;
  const JsonObject lineDated = only("kumquat");
  EXPECT_EQ(lineDated.numbers.at("date"), static_cast<long long>(mktime(&local)));
  // Its bytes are known with that line: its snippet is read again, not said changed.
  EXPECT_TRUE(holds(lineDated.strings.at("snippet"), "kumquat"));
  // Neither: no date, never the agent's default one.
  const JsonObject undated = only("quokka");
  EXPECT_EQ(undated.numbers.count("date"), 0u);
  const HostResult line = host({"search", "quokka"});
  EXPECT_TRUE(holds(line.out, "  -  Nowhen"));
  // Sorted by date either way, the undated come last.
  for (const char *order : {"newest", "oldest"}) {
    const std::vector<JsonObject> hits =
        searchJson("quokka OR kumquat OR xylophone", {"--sort", order});
    ASSERT_EQ(hits.size(), 3u);
    EXPECT_EQ(hits.back().strings.at("subject"), "no date anywhere") << order;
  }
  // A range is on the true date, and leaves the undated out.
  EXPECT_EQ(searchJson("xylophone", {"--since", "1998-01-15", "--until", "1998-01-15"}).size(), 1u);
  EXPECT_TRUE(searchJson("quokka", {"--since", "1970-01-01"}).empty());
}

TEST_F(HostReaderTest, CatShowsTheReadersViewAndRawTheAgentsBytes) {
  const std::string id = std::to_string(only("narwhal").numbers["id"]);
  const HostResult view = hostOk({"cat", id});
  for (const char *shown :
       {"From: Mixed <mixed@example.org>\n", "Subject: alternative with attachment\n",
        "The plain narwhal.", "Subject: the forwarded pangolin",
        "[attachment] Résumé.pdf  application/pdf  200 bytes"})
    EXPECT_TRUE(holds(view.out, shown));
  EXPECT_EQ(view.out.find("walrus"), std::string::npos);
  EXPECT_EQ(view.out.find("--outer"), std::string::npos);
  EXPECT_TRUE(
      holds(host({"cat", "--raw", id}).out, "--outer\r\nContent-Type: multipart/alternative"));
  EXPECT_TRUE(holds(host({"cat", std::to_string(only("Überweisung").numbers["id"])}).out,
                    "From: Jörg Grün <joerg@example.org>\nDate: "));
}

TEST_F(HostReaderTest, AnIndexOfTheOlderSchemaIsRebuiltNeverRead) {
  sqlite3 *db = nullptr;
  ASSERT_EQ(sqlite3_open(database.c_str(), &db), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db, "PRAGMA user_version = 1", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(db);
  EXPECT_TRUE(refused(host({"search", "xylophone"}), 1, "run mhhost index to rebuild it"));
  // The stores it held are known still: index without --client reads them all again.
  const HostResult rebuilt = host({"index"});
  EXPECT_TRUE(indexed(rebuilt, "8 new, 0 unchanged"));
  EXPECT_TRUE(holds(rebuilt.err, "was made by an older mhhost; it is rebuilt"));
  EXPECT_EQ(searchJson("xylophone").size(), 1u);
}
} // namespace
