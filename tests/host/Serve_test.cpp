// mhhost serve end to end: its guards, and its API over a small index.
#include "tests/host/HostFixture.h"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sstream>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using nlohmann::json;

// `mhhost serve --port 0` for as long as the object lives.
class Server {
public:
  explicit Server(HostFixture &host) : output_(host.dir.file("serve.out")) {
    pid_ = startProgram(
        TUK_MHHOST, {"--registry", host.registry, "--db", host.database, "serve", "--port", "0"},
        output_);
    const std::string start = "Serving the index at http://127.0.0.1:";
    for (int tries = 0; tries < 200 && port == 0; ++tries) {
      const std::string said = readFile(output_);
      const size_t at = said.find(start), query = said.find("/?token=");
      if (at != std::string::npos && said.find('\n', query) != std::string::npos) {
        port = std::stoi(said.substr(at + start.size()));
        token = said.substr(query + 8, said.find('\n', query) - query - 8);
      } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
      }
    }
  }
  ~Server() {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
  httplib::Client client() const { return httplib::Client("127.0.0.1", port); }
  json get(const std::string &path, int status = 200) const {
    const auto result =
        client().Get(path + (path.find('?') == path.npos ? "?" : "&") + "token=" + token);
    EXPECT_TRUE(result && result->status == status) << path;
    return result ? json::parse(result->body, nullptr, false) : json();
  }
  int port = 0;
  std::string token;

private:
  std::string output_;
  pid_t pid_;
};

class ServeTest : public HostFixture, public ::testing::Test {
protected:
  void SetUp() override {
    const std::string hostile = "garden <script>x()</script></title> javascript:x \xff\xfe ";
    indexMailbox({{"Thu, 15 Jan 1998 10:30:45 +0000", "Ann <a@x>", "b@x", "", "garden party",
                   "The garden party is on.\n"},
                  {"Fri, 16 Jan 1998 10:30:45 +0000", "Bob <b@x>", "a@x", "", "Re: plans",
                   "Bring the garden chairs.\n"},
                  {"Mon, 15 Mar 1999 08:00:00 +0000", "Eve <e@x>", "a@x", "",
                   hostile + repeated("y", 1 << 20), "A garden of <b>tags</b>.\n"}});
    ASSERT_NE(server.port, 0);
  }
  Server server{*this};
};

TEST_F(ServeTest, GuardsEveryRequestAndServesOnlyItsOwnFiles) {
  const std::string good = "token=" + server.token,
                    host = "127.0.0.1:" + std::to_string(server.port);
  struct Case {
    std::string hostHeader, postToken;
    const char *method, *path;
    int status;
    bool withToken;
  } cases[] = {
      {host, "", "GET", "/", 200, true},
      {"[::1]:" + std::to_string(server.port), "", "GET", "/api/stores", 200, true},
      {"localhost:" + std::to_string(server.port), "", "GET", "/static/index.html", 200, true},
      {host, "", "GET", "/api/stores", 403, false},
      {host, "", "GET", "/api/stores?token=0", 403, false},
      {"evil.example:" + std::to_string(server.port), "", "GET", "/api/stores", 403, true},
      {"127.0.0.1:1", "", "GET", "/api/stores", 403, true},
      {host, "", "POST", "/api/index", 403, true},
      {host, "wrong", "POST", "/api/index", 403, true},
      {host, "", "GET", "/static/../CMakeLists.txt", 404, true},
      {host, "", "GET", "/static/%2e%2e/CMakeLists.txt", 404, true},
      {host, "", "GET", "/static/..%2fCMakeLists.txt", 404, true},
      {host, "", "GET", "/%2fetc%2fpasswd", 404, true},
      {host, "", "GET", "//etc/passwd", 404, true},
      {host, "", "GET", "/index.html", 404, true},
      {host, "", "GET", "/api/message/1/../1", 404, true},
      {host, "", "GET", "/api/message/99999999999999999999", 404, true},
      {host, "", "GET", "/api/search?q=garden&offset=999999999&limit=1000", 200, true},
      {host, "", "GET", "/api/search?q=garden&offset=-1", 400, true},
      {host, "", "GET", "/api/search?q=garden&limit=0", 400, true},
      {host, "", "GET", "/api/search?q=garden&limit=1001", 400, true},
      {host, "", "GET", "/api/search?q=garden&sort=sideways", 400, true},
      {host, "", "GET", "/api/search?q=garden&year=19x9", 400, true},
      {host, "", "GET", "/api/search?q=garden&year=0000&store=%00", 200, true},
  };
  for (const Case &test : cases) {
    std::string path = test.path;
    if (test.withToken)
      path += std::string(path.find('?') == path.npos ? "?" : "&") + good;
    httplib::Headers headers = {{"Host", test.hostHeader}};
    if (!test.postToken.empty())
      headers.emplace("X-Tuk-Token", test.postToken);
    httplib::Client client = server.client();
    const auto result = std::string(test.method) == "GET" ? client.Get(path, headers)
                                                          : client.Post(path, headers, "", "");
    ASSERT_TRUE(result) << path;
    EXPECT_EQ(result->status, test.status) << test.method << " " << path;
    EXPECT_EQ(result->get_header_value("X-Content-Type-Options"), "nosniff") << path;
    EXPECT_EQ(result->get_header_value("Referrer-Policy"), "no-referrer") << path;
    EXPECT_EQ(result->get_header_value("Cache-Control"), "no-store") << path;
    EXPECT_TRUE(holds(result->get_header_value("Content-Security-Policy"),
                      "default-src 'none'; script-src 'self';"));
  }
}

TEST_F(ServeTest, SearchesPagesFacetsAndMessagesAsValidJson) {
  const json page = server.get("/api/search?q=garden&sort=oldest&offset=1&limit=1");
  ASSERT_FALSE(page.is_discarded());
  EXPECT_EQ(page["total"], 3);
  ASSERT_EQ(page["hits"].size(), 1u);
  EXPECT_EQ(page["hits"][0]["subject"], "Re: plans");
  EXPECT_EQ(page["hits"][0]["date"], "1998-01-16T10:30:45Z");
  EXPECT_EQ(page["hits"][0]["snippet"][1], json({{"text", "garden"}, {"hit", true}}));
  EXPECT_EQ(page["facets"]["years"],
            json::parse(R"([{"name":"1998","count":2},{"name":"1999","count":1}])"));
  EXPECT_EQ(page["facets"]["stores"], json::parse(R"([{"name":"eudora","count":3}])"));

  const json filtered = server.get("/api/search?q=garden&year=1999&store=eudora");
  ASSERT_EQ(filtered["hits"].size(), 1u);
  EXPECT_EQ(filtered["facets"], page["facets"]); // the filters narrow the hits only
  const std::string subject = filtered["hits"][0]["subject"];
  // Stray 8-bit bytes of a header are read as Windows-1252, as in mail.
  EXPECT_EQ(subject.substr(0, 54),
            "garden <script>x()</script></title> javascript:x \xC3\xBF\xC3\xBE ");
  EXPECT_GT(subject.size(), size_t{1} << 20);

  const json message = server.get("/api/message/" + filtered["hits"][0]["id"].get<std::string>());
  EXPECT_EQ(message["headers"]["subject"], subject);
  EXPECT_EQ(message["headers"]["from"], "Eve <e@x>");
  EXPECT_TRUE(holds(message["text"], "A garden of <b>tags</b>."));
  EXPECT_EQ(server.get("/api/message/999", 404)["error"], "the index holds no message 999");
  EXPECT_TRUE(
      holds(server.get("/api/search?q=%28garden", 400)["error"], "the query can't be read"));
  EXPECT_EQ(server.get("/api/search?q=garden&store=pegasus")["total"], 0);

  const json stores = server.get("/api/stores")["stores"];
  ASSERT_EQ(stores.size(), 1u);
  EXPECT_EQ(stores[0]["name"], "eudora");
  EXPECT_EQ(stores[0]["messages"], 3);
}

TEST_F(ServeTest, AnIndexRunReportsItsProgressToEveryStream) {
  std::string events;
  std::thread listener([&] {
    server.client().Get("/api/index/events?token=" + server.token,
                        [&](const char *data, size_t size) {
                          events.append(data, size);
                          return events.find("event: done") == events.npos;
                        });
  });
  while (events.empty())
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  // Another mhhost index holds the index: the run started waits for it, and a second is
  // refused while the first is under way.
  const int otherRun = ::open((database + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(otherRun, LOCK_EX), 0);
  const httplib::Headers headers = {{"X-Tuk-Token", server.token}};
  const auto started = server.client().Post("/api/index?token=" + server.token, headers, "", "");
  ASSERT_TRUE(started);
  EXPECT_EQ(started->status, 202);
  const auto second = server.client().Post("/api/index?token=" + server.token, headers, "", "");
  ::close(otherRun);
  ASSERT_TRUE(second);
  EXPECT_EQ(second->status, 409);
  listener.join();
  EXPECT_TRUE(holds(events, "event: idle\n"));
  EXPECT_TRUE(holds(events, "event: progress\ndata: {\"mailboxes\":1,\"messages\":3,\"new\":0,"
                            "\"store\":\"eudora\"}"));
  EXPECT_TRUE(holds(events, "event: done\ndata: {\"messages\":3,\"new\":0,"));
}

// Mail over five years, some sent in the same second, so that pages must break ties as the
// index does.
std::vector<TestMessage> yearsOfMail(int count, int first = 0) {
  std::vector<TestMessage> messages;
  for (int i = first; i < first + count; ++i) {
    char date[64];
    std::snprintf(date, sizeof date, "Sun, %02d Mar %d 10:%02d:00 +0000", 1 + i % 28, 1997 + i % 5,
                  i % 3 == 0 ? 0 : i % 60);
    std::string body = "alpha";
    body += i % 3 == 0 ? " beta" : "";
    body += i % 7 == 0 ? " gamma" : "";
    messages.push_back({date, "Sender <s@x>", "r@x", "", "note " + std::to_string(i), body + "\n"});
  }
  return messages;
}

// A Netscape mailbox of the same words, dated by its delimiter lines only: every fifth line's
// date can't be read, and those messages have none.
std::string netscapeMail(int count) {
  std::string mbox;
  for (int i = 0; i < count; ++i) {
    char line[64];
    std::snprintf(line, sizeof line, "From - %s %02d 08:15:00 %d\n",
                  i % 5 == 2 ? "Tue Xyz" : "Tue Jan", 1 + i % 20, 1998 + i % 3);
    mbox += line;
    mbox += "From: Other <o@x>\nSubject: letter " + std::to_string(i) + "\n\nalpha" +
            (i % 2 == 0 ? " beta" : " gamma") + "\n";
  }
  return mbox;
}

class ServeIndexTest : public HostFixture, public ::testing::Test {
protected:
  // The ids of `mhhost search` for the same page.
  std::vector<std::string> commandLineIds(const std::string &query, const std::string &sort,
                                          int offset, int year, const std::string &store) {
    std::vector<std::string> arguments = {
        "search",  query, "--sort",   sort, "--offset", std::to_string(offset),
        "--limit", "6",   "--output", "ids"};
    if (year != 0)
      arguments.insert(arguments.end(), {"--since", std::to_string(year) + "-01-01", "--until",
                                         std::to_string(year) + "-12-31"});
    if (!store.empty())
      arguments.insert(arguments.begin(), {"--client", store});
    std::vector<std::string> ids;
    std::istringstream lines(host(arguments).out);
    for (std::string line; std::getline(lines, line);)
      ids.push_back(line);
    return ids;
  }
};

TEST_F(ServeIndexTest, PagesCountsAndFacetsAgreeWithTheIndexItself) {
  indexMailbox(yearsOfMail(90));
  writeFile(dir.file("ns/Inbox"), netscapeMail(40));
  writeFile(dir.file("ns/Inbox.snm"), std::string(64, '\0'));
  hostOk({"config", "--client", "netscape", "--mail-dir", dir.file("ns"), "--yes"});
  ASSERT_TRUE(indexed(host({"index", "--client", "netscape"}), "40 new"));
  const Server server(*this);
  ASSERT_NE(server.port, 0);
  for (const std::string query : {"alpha", "alpha NOT beta", "gamma OR beta"})
    for (const std::string sort : {"newest", "oldest", "relevance"})
      for (const std::string store : {"", "netscape"})
        for (const int year : {0, 1999})
          for (const int offset : {0, 40, 120}) {
            char page[128];
            std::snprintf(page, sizeof page, "&sort=%s&offset=%d&limit=6&store=%s&year=%.0d",
                          sort.c_str(), offset, store.c_str(), year);
            SCOPED_TRACE(query + page);
            const json found =
                server.get("/api/search?q=" + httplib::detail::encode_query_param(query) + page);
            std::vector<std::string> ids;
            for (const json &hit : found["hits"])
              ids.push_back(hit["id"]);
            EXPECT_EQ(ids, commandLineIds(query, sort, offset, year, store));
            // A folder condition leaves the count, facets and page to the index.
            const json counted =
                server.get("/api/search?q=" +
                           httplib::detail::encode_query_param("(" + query + ") folder:In") +
                           std::string(page));
            EXPECT_EQ(counted["facets"], found["facets"]);
            EXPECT_EQ(counted["total"], found["total"]);
            EXPECT_EQ(counted["hits"], found["hits"]);
          }
}

TEST_F(ServeIndexTest, FollowsIndexRunsAndAnIndexMadeAnew) {
  indexMailbox(yearsOfMail(20));
  const Server server(*this);
  ASSERT_NE(server.port, 0);
  EXPECT_EQ(server.get("/api/search?q=alpha")["total"], 20);
  // Another mhhost adds to the index while the server reads it.
  writeMailbox("eudora", dir.file("mail/In"), yearsOfMail(30));
  EXPECT_TRUE(indexed(host({"--client", "eudora", "index"}), ""));
  const json grown = server.get("/api/search?q=alpha&limit=30");
  EXPECT_EQ(grown["total"], 30);
  EXPECT_EQ(grown["hits"].size(), 30u);
  // The index is made anew beside its place and renamed over it.
  for (const char *suffix : {"", "-wal", "-shm"})
    std::remove((database + suffix).c_str());
  writeMailbox("eudora", dir.file("mail/In"), yearsOfMail(10, 100));
  EXPECT_TRUE(indexed(host({"--client", "eudora", "index"}), ""));
  const json made = server.get("/api/search?q=alpha&sort=oldest");
  EXPECT_EQ(made["total"], 10);
  ASSERT_FALSE(made["hits"].empty());
  EXPECT_EQ(made["hits"][0]["subject"], "note 100");
}

} // namespace
