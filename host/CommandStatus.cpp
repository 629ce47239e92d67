// mhhost status: the stores that are set up or indexed, where their mail is, how many
// messages the index holds of each and when it last read them; and the index itself.
#include "host/AgentRegistry.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/IndexDb.h"
#include "host/SearchRequest.h"
#include "host/TimeText.h"
#include "host/VisibleText.h"

#include <algorithm>
#include <cstdio>
#include <sys/stat.h>

int runStatus(const CommandLine &, const HostSettings &settings) {
  std::vector<StoreStatus> stores;
  std::string error;
  struct stat file;
  const bool hasIndex = stat(settings.databasePath.c_str(), &file) == 0;
  if (hasIndex) {
    const std::unique_ptr<IndexDb> db =
        IndexDb::open(settings.databasePath, IndexDb::Access::ReadOnly, error);
    if (!db)
      return reportError(error);
    stores = db->storeStatus();
    if (!db->ok())
      return reportError(db->errorText());
  }
  for (const std::string &key : configuredStores())
    if (std::none_of(stores.begin(), stores.end(),
                     [&key](const StoreStatus &store) { return store.agentKey == key; }))
      stores.push_back({key, 0, false, 0});
  if (stores.empty())
    std::printf("no store is set up: run mhhost config --client CLIENT --mail-dir DIR\n");
  for (const StoreStatus &store : stores) {
    std::string directory;
    if (!readAgentValue(store.agentKey, kMailPathValue, directory) || directory.empty())
      directory = "(no mail directory)";
    std::printf("%s\n  mail:     %s\n  messages: %lld\n  indexed:  %s\n",
                visibleText(storeName(store.agentKey)).c_str(), visibleText(directory).c_str(),
                static_cast<long long>(store.messages),
                store.indexed ? formatDate(true, store.indexedAt).c_str() : "never");
  }
  if (hasIndex)
    std::printf("index: %s, %.1f MB\n", visibleText(settings.databasePath).c_str(),
                static_cast<double>(file.st_size) / 1e6);
  else
    std::printf("index: %s, not made yet\n", visibleText(settings.databasePath).c_str());
  return kExitOk;
}
