// mhhost demo: sample stores of the four clients in a folder of their own, configured,
// indexed, searched and shown, with each step printed as the command a person would type.
#include "host/AgentLibrary.h"
#include "host/Clients.h"
#include "host/Commands.h"
#include "host/DemoStores.h"
#include "host/ExitStatus.h"
#include "host/IndexDb.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>

namespace {

// A word as a POSIX shell reads it back.
std::string shellWord(const std::string &word) {
  if (!word.empty() && word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRS"
                                              "TUVWXYZ0123456789-_./=:,+@") == std::string::npos)
    return word;
  std::string quoted = "'";
  for (const char c : word)
    quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

class DemoSession {
public:
  DemoSession(std::string folder)
      : folder_(std::move(folder)), registry_(folder_ + "/registry.reg"),
        database_(folder_ + "/mhhost.db") {}

  const std::string &database() const { return database_; }

  // Prints the command and runs it as mhhost would, asking nothing.
  int run(const std::vector<std::string> &words) {
    std::vector<std::string> all = {"mhhost", "--registry", registry_, "--db", database_};
    all.insert(all.end(), words.begin(), words.end());
    std::string shown = "\n$ mhhost";
    for (size_t i = 1; i < all.size(); ++i)
      shown += " " + shellWord(all[i]);
    std::printf("%s\n", shown.c_str());
    std::fflush(stdout);
    std::vector<char *> argv;
    argv.reserve(all.size() + 1);
    for (std::string &word : all)
      argv.push_back(&word[0]);
    argv.push_back(nullptr);
    CommandLine line;
    std::string error;
    if (!parseCommandLine(static_cast<int>(all.size()), argv.data(), line, error))
      return reportUsageError(line.command, error);
    line.askNothing = true;
    const int status = runCommandLine(line);
    std::fflush(stdout);
    return status;
  }

private:
  std::string folder_, registry_, database_;
};

bool isEmptyFolder(const std::string &path) {
  DIR *folder = opendir(path.c_str());
  if (folder == nullptr)
    return false;
  int entries = 0;
  while (const struct dirent *entry = readdir(folder))
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
      ++entries;
  closedir(folder);
  return entries == 0;
}

// The demo's folder: --dir (made when missing, else it must be empty) or a new one.
bool demoFolder(const CommandLine &line, std::string &folder, std::string &error) {
  if (line.has("dir")) {
    folder = absolutePath(line.value("dir"));
    if (folder.empty()) {
      error = "--dir needs a folder";
      return false;
    }
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
      error = "cannot make " + folder + ": " + std::strerror(errno);
      return false;
    }
    if (!isEmptyFolder(folder)) {
      error = folder + " is not an empty folder; the demo writes only into a folder of its own";
      return false;
    }
    return true;
  }
  const char *temporary = std::getenv("TMPDIR");
  std::string pattern =
      std::string(temporary != nullptr && *temporary == '/' ? temporary : "/tmp") +
      "/mhhost-demo-XXXXXX";
  if (mkdtemp(&pattern[0]) == nullptr) {
    error = "cannot make a folder for the demo: " + std::string(std::strerror(errno));
    return false;
  }
  folder = pattern;
  return true;
}

// The id of the best hit of `match` in one client's store, or 0.
int64_t firstHit(const std::string &database, const std::string &client, const std::string &match) {
  std::string error;
  const std::unique_ptr<IndexDb> db = IndexDb::open(database, IndexDb::Access::ReadOnly, error);
  if (!db)
    return 0;
  SearchQuery query;
  query.match = match;
  query.agentKey = defaultAgentKey(*findClient(client));
  query.limit = 1;
  std::vector<SearchHit> hits;
  return db->search(query, hits, error) && !hits.empty() ? hits.front().id : 0;
}

} // namespace

int runDemo(const CommandLine &line, const HostSettings &) {
  std::string folder, error;
  if (!demoFolder(line, folder, error))
    return reportError(error);
  std::vector<DemoStore> stores;
  if (!writeDemoStores(folder, stores, error))
    return reportError(error);
  std::printf("The demo's sample stores, registry file and index are in %s\n", folder.c_str());
  DemoSession demo(folder);
  // Each step builds on the ones before: the demo stops at the first that fails.
  bool failed = false;
  const auto step = [&](const std::vector<std::string> &words) {
    failed = failed || demo.run(words) != kExitOk;
  };
  for (const DemoStore &store : stores) {
    std::vector<std::string> words = {"config", "--client", store.client, "--mail-dir",
                                      store.mailDirectory};
    if (!store.programDirectory.empty())
      words.insert(words.end(), {"--exe-dir", store.programDirectory});
    words.push_back("--yes");
    step(words);
  }
  for (const DemoStore &store : stores)
    step({"index", "--client", store.client, "--stats"});
  step({"search", "report"});
  step({"search", "from:carol OR cc:carol"});
  step({"search", "lunch", "--since", "1998-01-01", "--until", "1998-12-31"});
  step({"search", "garden*", "--json", "--limit", "3"});
  for (const DemoStore &store : stores) {
    if (failed)
      break;
    const int64_t id = firstHit(demo.database(), store.client, store.showQuery);
    if (id == 0)
      return reportError("the demo found nothing for " + store.showQuery + " in the " +
                         store.client + " store");
    step({"show", std::to_string(id)});
  }
  // A MIME message as a reader shows it, found by a word of its quoted-printable text.
  if (const int64_t id = failed ? 0 : firstHit(demo.database(), "netscape", "aussicht")) {
    step({"search", "grüße"});
    step({"cat", std::to_string(id)});
  }
  if (failed)
    return reportError("the demo stopped at the step above, which failed; its files are in " +
                       folder);
  const std::string program = shellWord(programDirectory() + "/mhhost");
  std::printf("\nTry more on the demo's files, e.g.:\n  %s --registry %s --db %s search "
              "'subject:quarterly'\nPoint it at your own store with: %s config --client "
              "CLIENT --mail-dir DIR\n",
              program.c_str(), shellWord(folder + "/registry.reg").c_str(),
              shellWord(demo.database()).c_str(), program.c_str());
  return kExitOk;
}
