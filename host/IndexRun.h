// An index run as mhhost index makes it, for the command and for the search page's server.
#pragma once

#include "host/HostSettings.h"
#include "host/Indexer.h"

#include <functional>
#include <string>

// What an index run tells as it goes: each store once its run has committed, and while a
// store is read, the bytes of its mailboxes walked so far, of all, and the new messages (at
// most five times a second).
struct IndexListener {
  std::function<void(const std::string &agentKey, const IndexSummary &)> storeIndexed;
  std::function<void(const std::string &agentKey, uint64_t done, uint64_t total, uint64_t added)>
      reading;
};

// Brings the store of settings.agentKey, or when it is empty every store the index holds and
// config set up, up to date, and publishes a new index once whole. Errors are reported as the
// command reports them; returns the exit status.
int updateStores(const HostSettings &settings, bool stats, const IndexListener &listener);
