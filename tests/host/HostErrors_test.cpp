// mhhost on bad input: wrong command lines, a database that is not ours, damaged or locked,
// a store that is not there, a missing agent. A clear message, status 1 or 2, nothing lost.
#include "tests/host/HostFixture.h"
#include <fcntl.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace {
const TestMessage kNote = {"Thu, 15 Jan 1998 10:30:45 +0000",
                           "Ann Lee <ann@example.org>",
                           "team@example.org",
                           "",
                           "Status note",
                           "All is well.\n"};

class HostErrorsTest : public HostFixture, public ::testing::Test {};

TEST_F(HostErrorsTest, UsageErrorsExitWithTwo) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"frobnicate"},
      {"index", "--frob"},
      {"index", "--json"},
      {"--client", "mutt", "index"},
      {"--key", "Software\\Tuk\\Agents\\MHMutt", "index"},
      {"--client", "eudora", "--key", "Software\\X\\MHEudora", "index"},
      {"list"},
      {"config", "--client", "eudora"},
      {"config", "--client", "netscape", "--mail-dir", "/tmp", "--attachments", "on"},
      {"config", "--client", "eudora", "--mail-dir", "/tmp", "--attachments", "maybe"},
      {"search"},
      {"--language", "QQ", "search", "x"},
      {"search", "x", "--limit", "0"},
      {"search", "x", "--since", "yesterday"},
      {"search", "x", "--until", "1998-13-01"},
      {"search", "x", "--db"},
      {"show", "first"},
      {"cat"},
      {"index", "--stats=yes"}};
  for (const std::vector<std::string> &arguments : wrong) {
    SCOPED_TRACE(::testing::PrintToString(arguments));
    const HostResult run = host(arguments);
    EXPECT_EQ(2, run.status) << run.err;
    EXPECT_FALSE(run.err.empty());
    EXPECT_EQ("", run.out);
  }
  // With no store set up and none indexed, "index" alone has nothing to read.
  EXPECT_EQ(2, host({"index"}).status);
}

// Queries as people type them are read, and one that can't be is told in the words of the
// query, with a mark under the place: no word of the engine's reaches the person.
TEST_F(HostErrorsTest, QueriesAsTypedAndTheMistakesInThem) {
  indexMailbox({kNote});
  for (const char *readable : {"ann@example.org", "from:ann@example.org", "-nothing ann",
                               "NOT nothing", "ann and not nothing", "re:status", "*x"})
    EXPECT_EQ(0, host({"search", readable}).status) << readable;
  EXPECT_EQ(1u, searchJson("ann@example.org").size());
  const std::tuple<const char *, const char *, size_t> cases[] = {
      {"a \"unclosed", "double quote is not closed", 2},
      {"AND", "a word is missing before this operator", 0},
      {"garden OR", "ends where a word was expected", 9},
      {"(garden party", "parenthesis is not closed", 0},
      {"garden)", "closes none", 6},
      {"date:1998-13", "date: wants a day", 0},
      {"client:mutt", "client: is one of", 0},
      {"a (b OR date:1998)", "stand beside the words", 3},
      {"a OR NOT b", "NOT inside parentheses or OR", 5},
  };
  for (const auto &[query, said, column] : cases) {
    const HostResult run = host({"search", query});
    EXPECT_TRUE(refused(run, 2, said));
    EXPECT_TRUE(
        holds(run.err, "\n  " + std::string(query) + "\n  " + std::string(column, ' ') + "^\n"));
    for (const char *internal : {"fts5", "column", "syntax error", "unterminated"})
      EXPECT_EQ(std::string::npos, run.err.find(internal)) << run.err;
  }
}

// A file that is not our index, for any reason, is refused by every command and left byte for
// byte as it was, with a message that says why.
TEST_F(HostErrorsTest, AnyDatabaseButOurIntactIndexIsLeftAlone) {
  const auto setApplicationId = [](std::string &bytes, uint32_t value) {
    for (int i = 0; i < 4; ++i) // big-endian, at 68 in the header
      bytes[68 + i] = static_cast<char>(value >> (24 - 8 * i));
  };
  // What the message says, and how the file was made so.
  const std::pair<const char *, std::function<void(std::string &)>> cases[] = {
      {"another program", [&](std::string &b) { setApplicationId(b, 0x12345678); }},
      {"another program", [&](std::string &b) { setApplicationId(b, 0); }},
      {"not an SQLite database",
       [](std::string &b) { b = "These are my notes.\n" + std::string(600, 'x'); }},
      {"damaged", // every page but the first, the header and the schema
       [](std::string &b) {
         for (size_t i = 4096; i < b.size(); ++i)
           b[i] = static_cast<char>(0xA5 ^ i);
       }},
  };
  indexMailbox({kNote});
  const std::string intact = readFile(database);
  ASSERT_GT(intact.size(), 8192u);
  for (const auto &[why, damage] : cases) {
    std::string bytes = intact;
    damage(bytes);
    writeFile(database, bytes);
    for (const std::vector<std::string> &command :
         {std::vector<std::string>{"--client", "eudora", "index"},
          std::vector<std::string>{"search", "status"}, std::vector<std::string>{"show", "1"}}) {
      const HostResult run = host(command);
      EXPECT_TRUE(refused(run, 1, why)) << command[0];
      EXPECT_EQ("", run.out);
    }
    EXPECT_EQ(bytes, readFile(database)) << why;
  }
}

TEST_F(HostErrorsTest, ALockedIndexIsReportedAndLeftAlone) {
  indexMailbox({kNote});
  // Read first: closing any descriptor of the file would drop this process's lock.
  const std::string before = readFile(database);
  const int fd = open(database.c_str(), O_RDWR);
  ASSERT_GE(fd, 0);
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET; // the whole file: no other process gets even a read lock
  ASSERT_EQ(0, fcntl(fd, F_SETLK, &lock));
  EXPECT_TRUE(refused(host({"--client", "eudora", "index"}), 1, "locked"));
  close(fd);
  EXPECT_EQ(before, readFile(database));
  EXPECT_EQ(1u, searchJson("status").size());
}

TEST_F(HostErrorsTest, AStoreThatIsNotThereChangesNothing) {
  indexMailbox({kNote});
  setRegistryValue("eudora", "MailPath", dir.file("moved-away"));
  const HostResult run = host({"--client", "eudora", "index"});
  EXPECT_TRUE(refused(run, 1, "is not there"));
  EXPECT_TRUE(holds(run.err, "mhhost config --client eudora"));
  EXPECT_EQ(1u, searchJson("status").size());
  EXPECT_TRUE(refused(host({"--client", "pegasus", "index"}), 1, "no mail directory is set"));
  EXPECT_EQ(1, host({"--client", "pegasus", "list"}).status);
}

// A first run makes the index beside where it goes and puts it in place whole: what a
// stopped one left is no index to a search, and the next run starts over.
TEST_F(HostErrorsTest, NoIndexYetIsSaidSoThoughAStoppedFirstRunLeftOneHalfMade) {
  for (const std::vector<std::string> &command :
       {std::vector<std::string>{"search", "x"}, std::vector<std::string>{"show", "1"},
        std::vector<std::string>{"cat", "1"}})
    EXPECT_TRUE(refused(host(command), 1, "run mhhost index first"));
  EXPECT_FALSE(fileExists(database)) << "a read must not make an index";
  writeFile(database + ".new", "half an index");
  EXPECT_TRUE(refused(host({"search", "well"}), 1,
                      "is not made yet: an mhhost index run is making it, or was stopped"));
  indexMailbox({kNote});
  EXPECT_EQ(1u, searchJson("well").size());
  EXPECT_NE(0, access((database + ".new").c_str(), F_OK));
}

TEST_F(HostErrorsTest, AMissingAgentIsSaidSo) {
  indexMailbox({kNote});
  // mhhost and the libraries it links, without the agent beside them.
  const std::string bin = dir.file("bin");
  makeDirs(bin);
  for (const char *name : {"mhhost", "libtuk_cmn.so", "libtuk_platform.so"}) {
    writeFile(bin + "/" + name, readFile(std::string(TUK_BIN_DIR) + "/" + name));
    chmod((bin + "/" + name).c_str(), 0755);
  }
  const HostResult run = runProgram(
      bin + "/mhhost", {"--registry", registry, "--db", database, "--client", "eudora", "index"});
  EXPECT_TRUE(refused(run, 1, "cannot load the agent " + bin + "/tuk_mhmail.so"));
  EXPECT_EQ(1u, searchJson("status").size());
}

TEST_F(HostErrorsTest, AHitWhoseMessageMovedIsToldByTheAgent) {
  indexMailbox({kNote});
  const long long id = searchJson("status").front().numbers.at("id");
  // Rewritten in place with other bytes at the message's place: the agent's message box.
  std::string bytes = readFile(dir.file("mail/In.mbx"));
  bytes.replace(bytes.find("All is well"), 11, "All is gone");
  writeFile(dir.file("mail/In.mbx"), bytes);
  const HostResult run = host({"show", std::to_string(id)});
  EXPECT_EQ(1, run.status);
  EXPECT_EQ(0u, run.out.find("== Eudora Mail ==\nThe mail message could not be found.\n"))
      << run.out;
  EXPECT_TRUE(holds(run.out, "Please reindex your mail"));
  EXPECT_TRUE(refused(host({"cat", std::to_string(id)}), 1, "run mhhost index"));
  // Gone altogether: the agent can't open the mailbox.
  unlink(dir.file("mail/In.mbx").c_str());
  EXPECT_TRUE(refused(host({"show", std::to_string(id)}), 1, "can't be opened any more"));
  EXPECT_EQ(1, host({"show", "999"}).status);
}

// Nothing the mail holds steers the terminal: hit lines and the reader's view show control
// characters for what they are, JSON escapes them, and odd bytes are read as Windows-1252.
TEST_F(HostErrorsTest, WhatTheMailHoldsIsShownNeverObeyed) {
  TestMessage odd = kNote;
  odd.subject = std::string("Quote \" back\\slash tab\t bell\x07 caf\xc3\xa9 latin\xe9 end");
  odd.from = "\"Lee, Ann\" <ann@example.org>";
  odd.body = "red \x1b[31mink\x1b[0m, a title \x1b]0;owned\x07 and a C1 \xc2\x9b"
             "2J clear\n";
  indexMailbox({odd});
  const std::vector<JsonObject> hits = searchJson("quote");
  ASSERT_EQ(1u, hits.size());
  // Valid UTF-8 stays; a byte of another code page is read as Windows-1252; control
  // characters are blanks, and runs of blanks one.
  EXPECT_EQ("Quote \" back\\slash tab bell  caf\xc3\xa9 latin\xc3\xa9 end",
            hits[0].strings.at("subject"));
  EXPECT_EQ(odd.from, hits[0].strings.at("from"));
  const HostResult line = host({"search", "red"});
  const HostResult json = host({"search", "red", "--json"});
  const HostResult view = host({"cat", std::to_string(hits[0].numbers.at("id"))});
  for (const HostResult *run : {&line, &view}) {
    EXPECT_EQ(std::string::npos, run->out.find_first_of("\x1b\x07")) << run->out;
    EXPECT_EQ(std::string::npos, run->out.find("\xc2\x9b")) << run->out;
  }
  EXPECT_TRUE(holds(line.out, "[red] ^[[31mink^[[0m"));
  EXPECT_TRUE(holds(view.out, "title ^[]0;owned^G and a C1 \\u009b2J"));
  EXPECT_TRUE(holds(json.out, "\\u001b[31m"));
  EXPECT_TRUE(holds(json.out, "\\u009b"));
  // The bytes as stored, for a file or a pipe.
  const std::string id = std::to_string(hits[0].numbers.at("id"));
  EXPECT_TRUE(holds(host({"cat", "--raw", id}).out, "\x1b]0;"));
}
} // namespace
