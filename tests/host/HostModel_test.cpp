// An index kept up to date run after run holds what a fresh index of the store holds, after
// any sequence of the changes a mail client makes between two runs. TUK_MODEL_STEPS and
// TUK_MODEL_SEED set the length of the run and its seed.
#include "tests/host/HostFixture.h"
#include "tests/support/ClientStores.h"
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
namespace fs = std::filesystem;

unsigned long environmentNumber(const char *name, unsigned long fallback) {
  const char *value = std::getenv(name);
  return value != nullptr && *value != '\0' ? std::strtoul(value, nullptr, 10) : fallback;
}

// What an index holds, one line per row, sorted: each object, each word the full-text table
// holds of it (its column and place), and what no index may hold. Ids are never taken: two
// indexes of one store give them differently. A removed message's words stay until the table
// is made anew, but never outnumber both a quarter of the messages and a thousand.
std::vector<std::string> indexRows(const std::string &database) {
  static const char *const kQueries[] = {
      "CREATE VIRTUAL TABLE temp.words USING fts5vocab(main, texts, instance)",
      R"sql(SELECT m.path, o.offset, o.length, o.checksum, o.time, o.date, o.decoded,
                   o.subject, o.sender
            FROM objects o JOIN mailboxes m ON m.id = o.mailbox)sql",
      R"sql(SELECT m.path, o.offset, w.term, w.col, w.offset
            FROM temp.words w JOIN objects o ON o.id = w.doc
            JOIN mailboxes m ON m.id = o.mailbox)sql",
      R"sql(SELECT 'empty mailbox ' || path FROM mailboxes
              WHERE id NOT IN (SELECT mailbox FROM objects)
            UNION ALL SELECT 'object without text or mailbox at ' || offset FROM objects
              WHERE id NOT IN (SELECT id FROM texts_docsize)
                 OR mailbox NOT IN (SELECT id FROM mailboxes)
            UNION ALL SELECT 'stale texts outnumber a quarter of the objects and a thousand'
              WHERE (SELECT count(*) FROM texts_docsize) - (SELECT count(*) FROM objects)
                    > max(1000, (SELECT count(*) FROM objects) / 4))sql"};
  std::vector<std::string> rows;
  sqlite3 *opened = nullptr;
  const int status = sqlite3_open_v2(database.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
  const std::unique_ptr<sqlite3, int (*)(sqlite3 *)> db(opened, sqlite3_close);
  if (status != SQLITE_OK) {
    ADD_FAILURE() << "cannot open " << database;
    return rows;
  }
  for (const char *sql : kQueries) {
    sqlite3_stmt *prepared = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_prepare_v2(db.get(), sql, -1, &prepared, nullptr))
        << sqlite3_errmsg(db.get());
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> statement(prepared,
                                                                           sqlite3_finalize);
    while (statement && sqlite3_step(statement.get()) == SQLITE_ROW) {
      std::string row;
      for (int column = 0; column < sqlite3_column_count(statement.get()); ++column) {
        const unsigned char *text = sqlite3_column_text(statement.get(), column);
        row += column == 0 ? "" : " | ";
        for (const char c : std::string(text ? reinterpret_cast<const char *>(text) : "NULL"))
          row += c == '\r' ? "\\r" : c == '\n' ? "\\n" : std::string(1, c);
      }
      rows.push_back(row);
    }
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

// The first few rows of `a` that `b` lacks, as multisets.
std::string rowsMissingFrom(const std::vector<std::string> &a, const std::vector<std::string> &b) {
  std::vector<std::string> only;
  std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(only));
  std::string text;
  for (size_t i = 0; i < only.size() && i < 4; ++i)
    text += "  " + only[i].substr(0, 300) + "\n";
  return text + (only.size() > 4 ? "  (" + std::to_string(only.size()) + " in all)\n" : "");
}

// Makes an index anew at `fresh` by `index`, the arguments of a run whose --db is index[3], and
// says what the index at index[3] lacks of it or holds beyond it; empty when both hold the same.
std::string differenceFromFresh(std::vector<std::string> index, const std::string &fresh) {
  const std::string database = index[3];
  fs::remove(fresh);
  index[3] = fresh;
  const HostResult made = runProgram(TUK_MHHOST, index);
  if (made.status != 0)
    return "a fresh index failed: " + made.err;
  const std::vector<std::string> ours = indexRows(database), theirs = indexRows(fresh);
  if (ours == theirs)
    return "";
  return "only in the index kept up to date:\n" + rowsMissingFrom(ours, theirs) +
         "only in a fresh index:\n" + rowsMissingFrom(theirs, ours);
}

// A message and the time on the delimiter line that Netscape writes ahead of it when it
// files it ("mm:ss" past 10 o'clock): a message moved to another mailbox gets a new one.
struct Letter {
  TestMessage message;
  std::string filed;
};

// A mailbox as the model knows it; its last message may be partly written.
struct Box {
  std::string stem;
  std::vector<Letter> letters;
  uint32_t missing = 0; // bytes of the last message not (yet) in the file
  bool hidden = false;  // its control file is away
  size_t written() const { return letters.size() - (missing ? 1 : 0); }
};

class HostModelTest : public HostFixture, public ::testing::TestWithParam<std::string> {
protected:
  const std::string &client() const { return GetParam(); }
  size_t pick(size_t count) { return static_cast<size_t>(generator() % count); }
  std::string shortName(const std::string &path) const { return path.substr(mail.size() + 1); }
  std::string words(size_t count) {
    static const char *const kWords[] = {"able", "bark", "coal", "dusk", "echo", "fern",
                                         "gale", "hush", "iris", "jade", "kite", "lamp"};
    std::string text;
    for (size_t i = 0; i < count; ++i)
      text += (i ? " " : "") + std::string(kWords[pick(std::size(kWords))]);
    return text;
  }
  std::string filedNow() {
    const size_t minute = pick(60), second = pick(60);
    return std::to_string(minute / 10) + std::to_string(minute % 10) + ":" +
           std::to_string(second / 10) + std::to_string(second % 10);
  }
  Letter newLetter() {
    static const char *const kPeople[] = {"Ann Lee <ann@example.org>", "bob@example.org",
                                          "Carol Diaz <carol@example.net>", "dan@example.com"};
    // Now and then no Date: the date comes from the delimiter line, where there is one.
    const std::string date = pick(5) == 0
                                 ? ""
                                 : std::to_string(1 + pick(28)) + " Jan 1998 " +
                                       std::to_string(10 + pick(14)) + ":" + filedNow() + " +0000";
    Letter letter{{date, kPeople[pick(4)], kPeople[pick(4)], pick(3) ? "" : kPeople[pick(4)],
                   words(1 + pick(3)), ""},
                  filedNow()};
    for (size_t lines = 1 + pick(3); lines > 0; --lines)
      letter.message.body += words(3 + pick(6)) + "\n";
    return letter;
  }
  Mailbox whole(const Box &box) const {
    std::vector<TestMessage> messages;
    for (const Letter &letter : box.letters)
      messages.push_back(letter.message);
    Mailbox mailbox = mailboxOf(client(), messages);
    // "From - Thu Jan 15 10:30:45 1998\n" ahead of each message: "30:45" is replaced.
    for (size_t i = 0; client() == "netscape" && i < box.letters.size(); ++i)
      mailbox.bytes.replace(mailbox.ranges[i].offset - 11, 5, box.letters[i].filed);
    return mailbox;
  }
  std::string bytesOf(const Box &box) const {
    const std::string bytes = whole(box).bytes;
    return bytes.substr(0, bytes.size() - box.missing);
  }
  std::string mailFile(const Box &box) const { return mailFileOf(client(), box.stem); }
  // What the model holds past the end of the file, written on.
  void appendRest(const Box &box) {
    appendFile(mailFile(box), bytesOf(box).substr(readFile(mailFile(box)).size()));
  }
  // A new name in the mail folder or in a folder below it.
  std::string newPath(const char *kind) {
    const size_t parent = pick(folders.size() + 1);
    return (parent < folders.size() ? folders[parent] : mail) + "/" + kind +
           std::to_string(++names);
  }
  void addBox(size_t messages) {
    Box box{newPath("Box"), {}, 0, false};
    while (box.letters.size() < messages)
      box.letters.push_back(newLetter());
    writeFile(mailFile(box), bytesOf(box));
    writeFile(controlFileOf(client(), box.stem), std::string(32, '\0'));
    boxes.push_back(box);
  }
  // Makes one change of the kind `kind` to a mailbox picked at random and says what it did;
  // empty when the mailbox doesn't allow it.
  std::string change(size_t kind) {
    Box *const box = boxes.empty() ? nullptr : &boxes[pick(boxes.size())];
    if (box == nullptr && kind < 9)
      return "";
    const std::string name = box ? shortName(box->stem) : "";
    switch (kind) {
    case 0: // a message appended, or one half written
    case 1:
      if (box->missing)
        return "";
      box->letters.push_back(newLetter());
      if (kind == 1)
        box->missing = 1 + static_cast<uint32_t>(pick(whole(*box).ranges.back().length - 1));
      appendRest(*box);
      return (kind == 0 ? "append to " : "half a message to ") + name;
    case 2: // the half-written message finished
      if (!box->missing)
        return "";
      box->missing = 0;
      appendRest(*box);
      return "finish the last message of " + name;
    case 3: { // a word changed, or two swapped, in place
      if (box->written() == 0)
        return "";
      const size_t index = pick(box->written());
      std::string &body = box->letters[index].message.body;
      const size_t first = 5 * pick(body.size() / 5), second = 5 * pick(body.size() / 5);
      const std::string old = body.substr(first, 4);
      const bool swap = pick(2) == 0 && body.substr(second, 4) != old;
      body.replace(first, 4, swap ? body.substr(second, 4) : old == "able" ? "bark" : "able");
      if (swap)
        body.replace(second, 4, old);
      std::fstream file(mailFile(*box), std::ios::in | std::ios::out | std::ios::binary);
      const std::string bytes = bytesOf(*box);
      file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
      EXPECT_TRUE(file.good()) << "cannot write " << mailFile(*box);
      return (swap ? "swap two words" : "change a word") + std::string(" of message ") +
             std::to_string(index) + " of " + name + " in place";
    }
    case 4:   // a message deleted, the later ones moved up
    case 5: { // or moved to the end of another mailbox, filed anew there
      Box &to = boxes[pick(boxes.size())];
      if (box->letters.size() < 2 || (kind == 5 && (&to == box || to.missing)))
        return "";
      const size_t index = pick(box->letters.size() - 1);
      const TestMessage message = box->letters[index].message;
      box->letters.erase(box->letters.begin() + static_cast<std::ptrdiff_t>(index));
      writeFile(mailFile(*box), bytesOf(*box));
      const std::string what = "message " + std::to_string(index) + " of " + name;
      if (kind == 4)
        return "delete " + what;
      to.letters.push_back({message, filedNow()});
      appendRest(to);
      return "move " + what + " to " + shortName(to.stem);
    }
    case 6: { // cut off in the middle of a message
      if (box->written() == 0)
        return "";
      const size_t index = pick(box->written());
      const MessageRange range = whole(*box).ranges[index];
      box->letters.resize(index + 1);
      box->missing = 1 + static_cast<uint32_t>(pick(range.length - 1));
      EXPECT_EQ(0, truncate(mailFile(*box).c_str(), range.offset + range.length - box->missing));
      return "cut " + name + " inside message " + std::to_string(index);
    }
    case 7: { // renamed, or moved to another folder
      const std::string to = newPath("Box");
      fs::rename(mailFile(*box), mailFileOf(client(), to));
      if (!box->hidden)
        fs::rename(controlFileOf(client(), box->stem), controlFileOf(client(), to));
      box->stem = to;
      return "rename " + name + " to " + shortName(to);
    }
    case 8: // the control file removed, the mailbox gone for the agent; or put back
      if ((box->hidden = !box->hidden))
        fs::remove(controlFileOf(client(), box->stem));
      else
        writeFile(controlFileOf(client(), box->stem), std::string(32, '\0'));
      return (box->hidden ? "remove" : "restore") + std::string(" the control file of ") + name;
    case 9: { // a folder deleted with all it holds
      if (folders.empty())
        return "";
      const std::string folder = folders[pick(folders.size())];
      const auto inside = [&](const std::string &path) {
        return (path + "/").rfind(folder + "/", 0) == 0;
      };
      fs::remove_all(folder);
      boxes.erase(
          std::remove_if(boxes.begin(), boxes.end(), [&](const Box &b) { return inside(b.stem); }),
          boxes.end());
      folders.erase(std::remove_if(folders.begin(), folders.end(), inside), folders.end());
      return "delete the folder " + shortName(folder);
    }
    default: // a new mailbox, now and then in a new folder
      if (pick(3) == 0) {
        folders.push_back(newPath("Dir"));
        fs::create_directories(folders.back());
      }
      addBox(1 + pick(4));
      return "new mailbox " + shortName(boxes.back().stem);
    }
  }
  std::vector<std::string> indexRun() const {
    return {"--registry", registry, "--db", database, "--client", client(), "index"};
  }
  std::mt19937 generator;
  std::string mail;
  std::vector<std::string> folders; // below `mail`
  std::vector<Box> boxes;
  int names = 0;
};

TEST_P(HostModelTest, AnIndexKeptUpToDateEqualsAFreshOne) {
  const unsigned long seed = environmentNumber("TUK_MODEL_SEED", 1);
  const unsigned long steps = environmentNumber("TUK_MODEL_STEPS", 60);
  // Each client its own sequence of changes, from the one seed.
  std::seed_seq seeds{seed, static_cast<unsigned long>(GetParam().size() * 131 + GetParam()[0])};
  generator.seed(seeds);
  mail = dir.file("mail");
  folders = {mail + "/Dir1", mail + "/Dir2"};
  for (const std::string &folder : folders)
    fs::create_directories(folder);
  for (int i = 0; i < 4; ++i)
    addBox(2 + pick(3));
  setRegistryValue(client(), "MailPath", mail);
  const std::string fresh = dir.file("fresh.db");
  std::string history;
  for (unsigned long step = 0; step <= steps; ++step) {
    std::string done = "the first run";
    while (step > 0 && (done = change(pick(11))).empty()) {
    }
    history += "  " + std::to_string(step) + ": " + done + "\n";
    const HostResult kept = runProgram(TUK_MHHOST, indexRun());
    ASSERT_EQ(0, kept.status) << kept.err;
    const std::string difference = differenceFromFresh(indexRun(), fresh);
    ASSERT_TRUE(difference.empty())
        << "seed " << seed << ", " << client() << ", step " << step << " (" << done << ")\n"
        << difference << "changes:\n"
        << history;
  }
}

INSTANTIATE_TEST_SUITE_P(EveryClient, HostModelTest, ::testing::ValuesIn(kClientNames));

// Two runs at once: the second waits for the first. A run killed at any moment, before, between
// or after its commits, leaves an index that the next run completes: the first run of a store,
// and a run after it changed. Each time the index is what a fresh run makes. The store: three
// mailboxes of 700 notes each (a run commits each 2,000 messages: once here).
TEST(HostKillTest, TwoRunsAtOnceOrOneKilledLeaveWhatOneRunMakes) {
  HostFixture host;
  const std::string mail = host.dir.file("mail"), fresh = host.dir.file("fresh.db");
  std::vector<TestMessage> messages;
  for (int i = 0; i < 700; ++i)
    messages.push_back({"1 Feb 1998 10:00:00 +0000", "ann@example.org", "bob@example.org", "",
                        "note " + std::to_string(i), std::string(40, 'x') + " words\n"});
  for (const char *stem : {"/In", "/Dir/Work", "/Dir/Old"})
    writeMailbox("eudora", mail + stem, messages);
  host.setRegistryValue("eudora", "MailPath", mail);
  const std::vector<std::string> index = {"--registry", host.registry, "--db", host.database,
                                          "--client",   "eudora",      "index"};
  const pid_t first = startProgram(TUK_MHHOST, index);
  ASSERT_GT(first, 0);
  const HostResult second = runProgram(TUK_MHHOST, index);
  int status = 0;
  waitpid(first, &status, 0);
  EXPECT_EQ(0, second.status) << second.err;
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ("", differenceFromFresh(index, fresh));
  // Kills fall anywhere in a whole first run, as long as it takes on this machine and build.
  std::mt19937 generator(static_cast<unsigned>(environmentNumber("TUK_MODEL_SEED", 1)));
  std::vector<std::string> freshRun = index;
  freshRun[3] = fresh;
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(0, runProgram(TUK_MHHOST, freshRun).status);
  const auto span = std::chrono::duration_cast<std::chrono::microseconds>(
                        std::chrono::steady_clock::now() - start)
                        .count() +
                    1;
  for (int round = 0; round < 8; ++round) {
    if (round % 2 == 0) {
      fs::remove(host.database); // a first run
    } else {
      messages.erase(messages.begin() + static_cast<long>(generator() % messages.size()));
      writeMailbox("eudora", mail + "/Dir/Work", messages);
    }
    const pid_t child = startProgram(TUK_MHHOST, index);
    ASSERT_GT(child, 0);
    usleep(static_cast<useconds_t>(generator() % static_cast<unsigned long>(span)));
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    const HostResult completed = runProgram(TUK_MHHOST, index);
    ASSERT_EQ(0, completed.status) << "round " << round << ": " << completed.err;
    const std::string difference = differenceFromFresh(index, fresh);
    ASSERT_TRUE(difference.empty()) << "round " << round << "\n" << difference;
  }
}
} // namespace
