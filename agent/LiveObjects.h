// LiveObjects: the object handles the host holds now. An entry touches what stands behind a
// handle only when the handle is one that the agent gave out and has not taken back, so that
// a handle closed twice, never opened or made up gets its entry's failure status instead of a
// wild read.
#pragma once

#include "include/tuk/AgentAbi.h"

#include <unordered_set>

class LiveObjects {
public:
  void add(AgentHandle handle) { handles_.insert(handle); }
  bool contains(AgentHandle handle) const { return handles_.count(handle) != 0; }
  // True when `handle` was live; it is not from now on.
  bool remove(AgentHandle handle) { return handles_.erase(handle) != 0; }

private:
  std::unordered_set<AgentHandle> handles_;
};
