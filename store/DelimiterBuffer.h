// DelimiterBuffer: a mail file's delimiter in a malloc'd buffer, released with free, together
// with the two of its bytes that a scan looks for before it compares the whole, chosen once
// when the delimiter is set rather than for every message framed.
#pragma once

#include "store/ByteSearch.h"
#include "store/MallocPtr.h"

#include <cstdint>
#include <utility>

class DelimiterBuffer {
public:
  unsigned char *get() const { return bytes_.get(); }
  // Takes `bytes`, whose first `length` bytes are the delimiter.
  void reset(MallocPtr<unsigned char> bytes, uint32_t length) {
    bytes_ = std::move(bytes);
    pair_ = rarestPair(bytes_.get(), length);
  }
  const BytePair &pair() const { return pair_; }

private:
  MallocPtr<unsigned char> bytes_;
  BytePair pair_;
};
