// The host's side of a benchmark walk: tuk_mhmail.so loaded with dlopen and driven through
// its entries alone, as an indexing host enumerates a store and, when asked, indexes it.
#pragma once

#include <cstdint>
#include <string>

enum class WalkMode {
  Find,  // findFirstObjectHandle and findNextObjectHandle through the whole store
  Index, // the same, and every object opened, read to its end, its properties taken
};

struct WalkTotals {
  uint64_t objects = 0;
  uint64_t recordBytes = 0; // the lengths of the records found
  uint64_t bodyBytes = 0;   // what readObject delivered (Index only)
  uint64_t digest = 0;      // of everything the entries gave, when asked for
};

// Walks the store that the registry (TUK_REGISTRY) names for `agentKey`. False, with
// `error` set, when the agent can't be loaded or an entry fails where a host expects none.
bool walkStore(const std::string &libraryPath, const std::string &agentKey, WalkMode mode,
               bool withDigest, WalkTotals &totals, std::string &error);
