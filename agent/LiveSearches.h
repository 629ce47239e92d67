// LiveSearches and OpenSearch: the searches a host holds open, each from the
// findFirstObjectHandle that opened it until it is closed or ends. A search owns its
// CMailIndex, whose address is the handle the host holds. A handle that is not live is never
// read, so that one closed twice, never given out or made up gets its entry's failure status
// instead of a wild read.
#pragma once

#include "include/tuk/AgentAbi.h"

#include <cstdint>
#include <memory>
#include <vector>

class CMailIndex;

struct OpenSearch {
  std::unique_ptr<CMailIndex> index;
  // The last-write time of the mailbox the index has open, which every record of it carries.
  // Taken once, as the walk turned to the mailbox and before it mapped it: a stat for each
  // record would cost more than the record, and a stamp from before the mapping is never
  // newer than the bytes a record was read from.
  int32_t mailboxStamp = 0;
};

class LiveSearches {
public:
  LiveSearches();
  ~LiveSearches();
  LiveSearches(const LiveSearches &) = delete;
  LiveSearches &operator=(const LiveSearches &) = delete;

  // Makes `search` live; its handle.
  AgentHandle open(OpenSearch search);
  // The search behind a live handle, or null.
  OpenSearch *find(AgentHandle handle);
  // Ends a live search and deletes its index. False when the handle was not live.
  bool close(AgentHandle handle);
  bool empty() const { return searches_.empty(); }

private:
  // A host holds one search at a time, rarely a few: a list beats a hash here.
  std::vector<OpenSearch> searches_;
};
