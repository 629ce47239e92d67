// mhhost index: brings the index of one store, or of every store it holds, up to date.
#include "host/AgentRegistry.h"
#include "host/CommandSupport.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/IndexDb.h"
#include "host/IndexRunLock.h"
#include "host/Indexer.h"
#include "host/StoreTree.h"
#include "host/TextRebuild.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdio>

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
  std::printf("indexed: %llu new, %llu unchanged, %llu moved, %llu removed, %llu unreadable, "
              "%llu raw; %llu of %llu mailboxes read; %llu bytes in %.3f s, %.2f MB/s\n",
              static_cast<unsigned long long>(summary.added),
              static_cast<unsigned long long>(summary.unchanged),
              static_cast<unsigned long long>(summary.moved),
              static_cast<unsigned long long>(summary.removed),
              static_cast<unsigned long long>(summary.failed),
              static_cast<unsigned long long>(summary.raw),
              static_cast<unsigned long long>(summary.mailboxesRead),
              static_cast<unsigned long long>(mailboxes),
              static_cast<unsigned long long>(summary.bytes), seconds,
              seconds > 0 ? megabytes / seconds : 0.0);
  std::fflush(stdout);
}

int indexStore(IndexDb &db, const std::string &agentKey, const HostSettings &settings, bool stats,
               bool heading) {
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
    ProgressBar progress(!settings.log); // the log's lines would tear the bar
    const int64_t agentId = db.agentId(agentKey);
    if (agentId != 0) {
      updateIndex(agent->entries(), framingOfKey(agentKey), db, agentId, tree, progress,
                  summary);
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
  return kExitOk;
}

} // namespace

int runIndex(const CommandLine &line, const HostSettings &settings) {
  std::string error;
  const std::unique_ptr<IndexDb> db =
      IndexDb::open(settings.databasePath, IndexDb::Access::ReadWrite, error);
  if (!db)
    return reportError(error);
  IndexRunLock runLock;
  if (!runLock.acquire(settings.databasePath, error))
    return reportError(error);
  std::vector<std::string> keys;
  if (!settings.agentKey.empty()) {
    keys.push_back(settings.agentKey);
  } else {
    // Every store in the index, and every store config set up, indexed before or not.
    keys = db->agentKeys();
    if (!db->ok())
      return reportError(db->errorText());
    for (const std::string &key : configuredStores())
      if (std::find(keys.begin(), keys.end(), key) == keys.end())
        keys.push_back(key);
    if (keys.empty())
      return reportUsageError("index", "no store is set up yet: run mhhost config --client "
                                       "CLIENT --mail-dir DIR first");
  }
  int status = kExitOk;
  for (const std::string &key : keys) {
    const int result = indexStore(*db, key, settings, line.has("stats"), keys.size() > 1);
    if (result != kExitOk)
      status = result;
  }
  // Only a run that read every store the index holds may read them all again.
  const std::vector<std::string> held = db->agentKeys();
  const bool everyStore = std::all_of(held.begin(), held.end(), [&keys](const std::string &key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
  });
  if (status == kExitOk && everyStore && textsWantRebuild(*db) &&
      !rebuildTexts(*db, settings, error))
    return reportError(error + "; the full-text index stays as it was");
  return status;
}
