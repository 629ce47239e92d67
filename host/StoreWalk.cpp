// findFirstObjectHandle, findNextObjectHandle and closeFindObjectHandle, with the restart a
// record that does not fit calls for.
#include "host/StoreWalk.h"

namespace {
// A record can't be bigger than a path: a size beyond this is no reason to restart.
constexpr size_t kLargestRecord = 1 << 20;
} // namespace

int32_t StoreWalk::step(int32_t &time) {
  record_.offerCapacity();
  if (open_)
    return entries_.findNextObjectHandle(search_, record_.get(), &time);
  AgentHandle search = 0;
  const int32_t status = entries_.findFirstObjectHandle(0, &search, record_.get(), &time);
  if (status == StatusOk) {
    search_ = search;
    open_ = true;
  }
  return status;
}

const ObjectRecord *StoreWalk::next(int32_t &time) {
  while (!ended_) {
    const int32_t status = step(time);
    if (status == StatusOk) {
      if (toPassOver_ > 0) {
        --toPassOver_;
        continue;
      }
      ++given_;
      return record_.get();
    }
    if (status == StatusBufferTooSmall && record_->size > record_.capacity() &&
        record_->size <= kLargestRecord) {
      // The search is gone (or never began): start over with room enough.
      open_ = false;
      record_.reserve(record_->size);
      toPassOver_ = given_;
      continue;
    }
    close();
    ended_ = true;
  }
  return nullptr;
}

void StoreWalk::close() {
  if (open_)
    entries_.closeFindObjectHandle(search_);
  open_ = false;
}
