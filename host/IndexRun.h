// An index run as mhhost index makes it, for the command and for the search page's server.
#pragma once

#include "host/HostSettings.h"
#include "host/Indexer.h"

#include <functional>
#include <string>

// Told of each store once its run has committed.
using StoreIndexed = std::function<void(const std::string &agentKey, const IndexSummary &)>;

// Brings the store of settings.agentKey, or when it is empty every store the index holds and
// config set up, up to date, and publishes a new index once whole. Errors are reported as the
// command reports them; returns the exit status.
int updateStores(const HostSettings &settings, bool stats, const StoreIndexed &onStore);
