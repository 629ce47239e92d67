// mhhost index: brings the index of one store, or of every store it holds, up to date.
#include "host/AgentRegistry.h"
#include "host/CommandSupport.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/IndexDb.h"
#include "host/IndexRun.h"
#include "host/IndexRunLock.h"
#include "host/StoreTree.h"
#include "host/TextRebuild.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <sys/stat.h>

namespace {

// Everything besides the tree that decides what the agent makes of a store.
std::string storeSettings(const std::string &agentKey, const std::string &language) {
  std::string text = "language=" + language;
  for (const char *name : {kMailFileExtValue, kCtrlFileExtValue}) {
    std::string value;
    text += std::string("\n") + name + (readAgentValue(agentKey, name, value) ? "=" + value : "");
  }
  return text;
}

void printStats(const IndexSummary &summary) {
  if (!summary.walked)
    std::printf("walk: not needed, no mailbox and no folder changed\n");
  else
    std::printf("walk: %llu objects\n", static_cast<unsigned long long>(summary.walkedObjects));
  for (const MailboxReport &mailbox : summary.mailboxes)
    std::printf("read %s: %llu new, %llu unchanged, %llu moved, %llu removed, %llu unreadable, "
                "%llu raw\n",
                mailbox.path.c_str(), static_cast<unsigned long long>(mailbox.added),
                static_cast<unsigned long long>(mailbox.unchanged),
                static_cast<unsigned long long>(mailbox.moved),
                static_cast<unsigned long long>(mailbox.removed),
                static_cast<unsigned long long>(mailbox.failed),
                static_cast<unsigned long long>(mailbox.raw));
}

void printSummary(const IndexSummary &summary, double seconds) {
  const double megabytes = static_cast<double>(summary.bytes) / 1e6;
  const uint64_t mailboxes = summary.mailboxesRead + summary.mailboxesUnchanged;
  std::printf(
      "indexed: %llu new, %llu unchanged, %llu moved, %llu removed, %llu unreadable, "
      "%llu raw; %llu of %llu mailboxes read; %llu bytes in %.3f s, %.2f MB/s\n",
      static_cast<unsigned long long>(summary.added),
      static_cast<unsigned long long>(summary.unchanged),
      static_cast<unsigned long long>(summary.moved),
      static_cast<unsigned long long>(summary.removed),
      static_cast<unsigned long long>(summary.failed), static_cast<unsigned long long>(summary.raw),
      static_cast<unsigned long long>(summary.mailboxesRead),
      static_cast<unsigned long long>(mailboxes), static_cast<unsigned long long>(summary.bytes),
      seconds, seconds > 0 ? megabytes / seconds : 0.0);
  std::fflush(stdout);
}

int indexStore(IndexDb &db, const std::string &agentKey, const HostSettings &settings, bool stats,
               bool heading, const IndexListener &listener) {
  const auto start = std::chrono::steady_clock::now();
  std::string error, mailDirectory;
  if (!existingMailDirectory(agentKey, mailDirectory, error))
    return reportError(error);
  if (heading)
    std::printf("%s: %s\n", agentKey.c_str(), mailDirectory.c_str());
  const StoreTree tree = scanStoreTree(mailDirectory, storeSettings(agentKey, settings.language));
  for (const std::string &folder : tree.unreadable)
    reportWarning("cannot read the folder " + folder +
                  ": while it is unreadable the agent finds no mailbox at all, and no "
                  "message of this store is added");
  const std::unique_ptr<AgentLibrary> agent = loadAgent(settings, agentKey, error);
  if (!agent)
    return reportError(error);
  if (!db.begin())
    return reportError(db.errorText());
  IndexSummary summary;
  {
    ProgressBar progress(!settings.log, // the log's lines would tear the bar
                         [&](uint64_t done, uint64_t total, uint64_t added) {
                           if (listener.reading)
                             listener.reading(agentKey, done, total, added);
                         });
    const int64_t agentId = db.agentId(agentKey);
    if (agentId != 0) {
      updateIndex(agent->entries(), framingOfKey(agentKey), db, agentId, tree, progress, summary);
      db.setIndexedAt(agentId, static_cast<int64_t>(std::time(nullptr)));
    }
  }
  if (!db.ok() || !db.commit()) {
    const std::string reason = db.errorText();
    db.rollback();
    return reportError(reason + "; the index keeps what this run committed, and the next run "
                                "completes it");
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (summary.walked && summary.walkedObjects == 0)
    reportWarning("the agent finds no message below " + mailDirectory +
                  ": a mail file counts only with its control file beside it (for a "
                  "Thunderbird profile: mhhost config --client netscape --ctrl-ext .msf)");
  if (stats)
    printStats(summary);
  printSummary(summary, seconds);
  if (listener.storeIndexed)
    listener.storeIndexed(agentKey, summary);
  return kExitOk;
}

// Updates every store the command line names, or every store the index holds and config set
// up; then, when stale rows call for it, makes the full-text table anew.
int indexStores(const HostSettings &settings, bool stats, const IndexListener &listener,
                IndexDb &db) {
  std::vector<std::string> keys;
  if (!settings.agentKey.empty()) {
    keys.push_back(settings.agentKey);
  } else {
    // Every store in the index, and every store config set up, indexed before or not.
    keys = db.agentKeys();
    if (!db.ok())
      return reportError(db.errorText());
    for (const std::string &key : configuredStores())
      if (std::find(keys.begin(), keys.end(), key) == keys.end())
        keys.push_back(key);
    if (keys.empty())
      return reportUsageError("index", "no store is set up yet: run mhhost config --client "
                                       "CLIENT --mail-dir DIR first");
  }
  int status = kExitOk;
  for (const std::string &key : keys) {
    const int result = indexStore(db, key, settings, stats, keys.size() > 1, listener);
    if (result != kExitOk)
      status = result;
  }
  // Only a run that read every store the index holds may read them all again.
  const std::vector<std::string> held = db.agentKeys();
  const bool everyStore = std::all_of(held.begin(), held.end(), [&keys](const std::string &key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
  });
  std::string error;
  if (status == kExitOk && everyStore && textsWantRebuild(db) && !rebuildTexts(db, settings, error))
    return reportError(error + "; the full-text index stays as it was");
  return status;
}

// The index to update: the one there is, or, when there is none, a new one made beside where
// it goes (IndexDb::Access::Build). Null after the error has been reported.
std::unique_ptr<IndexDb> openForRun(const std::string &path, IndexRunLock &runLock, bool &fresh,
                                    std::string &error) {
  struct stat status;
  fresh = false;
  if (stat(path.c_str(), &status) == 0) {
    // Ours is checked before a lock file is made beside it.
    std::unique_ptr<IndexDb> db = IndexDb::open(path, IndexDb::Access::ReadWrite, error);
    return db && runLock.acquire(path, error) ? std::move(db) : nullptr;
  }
  if (!IndexDb::makeFolderOf(path, error) || !runLock.acquire(path, error))
    return nullptr;
  // Another run may have put one in place while this one waited for the lock.
  if (stat(path.c_str(), &status) == 0)
    return IndexDb::open(path, IndexDb::Access::ReadWrite, error);
  fresh = true;
  IndexDb::discardBuild(path); // what a stopped run left
  return IndexDb::open(IndexDb::buildingPath(path), IndexDb::Access::Build, error);
}

} // namespace

int updateStores(const HostSettings &settings, bool stats, const IndexListener &listener) {
  std::string error;
  IndexRunLock runLock;
  bool fresh = false;
  std::unique_ptr<IndexDb> db = openForRun(settings.databasePath, runLock, fresh, error);
  if (!db)
    return reportError(error);
  const int status = indexStores(settings, stats, listener, *db);
  if (!fresh)
    return status;
  // A new index goes in place once whole: after a database error it is dropped.
  const bool whole = db->ok() && db->endBuild();
  db.reset();
  if (!whole) {
    IndexDb::discardBuild(settings.databasePath);
    return status;
  }
  if (!IndexDb::publish(settings.databasePath, error))
    return reportError(error);
  return status;
}

int runIndex(const CommandLine &line, const HostSettings &settings) {
  return updateStores(settings, line.has("stats"), IndexListener{});
}
