// The walk over a store with the find entries, one record at a time. The search handle is
// closed when the walk ends or is destroyed. A record too big for the buffer (status 122)
// restarts the walk with the size the agent asked for and passes over the records already
// given, since a search that gave 122 cannot go on.
#pragma once

#include "host/RecordBuffer.h"
#include "include/tuk/AgentAbi.h"

#include <cstdint>

class StoreWalk {
public:
  explicit StoreWalk(const AgentEntryTable &entries) : entries_(entries) {}
  StoreWalk(const StoreWalk &) = delete;
  StoreWalk &operator=(const StoreWalk &) = delete;
  ~StoreWalk() { close(); }

  // The next record with its message's time, or null at the end of the store. The record
  // stays valid until the next call.
  const ObjectRecord *next(int32_t &time);
  // How many records the walk has given.
  uint64_t count() const { return given_; }
  // The buffer of the record last given.
  const RecordBuffer &record() const { return record_; }

private:
  int32_t step(int32_t &time);
  void close();

  const AgentEntryTable &entries_;
  RecordBuffer record_;
  AgentHandle search_ = 0;
  bool open_ = false;
  bool ended_ = false;
  uint64_t given_ = 0;
  uint64_t toPassOver_ = 0; // after a restart: records the earlier search already gave
};
