// The loop that cuts mapped mail into messages at delimiters, written once for every client.
//
// The clients differ only in which candidate starts a delimiter and where the message behind
// it begins. That test is the loop's template parameter, so each client still gets a loop of
// its own with the test inlined: this is the hottest loop of a walk.
#pragma once

#include "store/ByteSearch.h"

#include <cstdint>

// A message's place in the mailbox.
struct MessageFrame {
  uint32_t offset;
  uint32_t length;
};

// Frames the message that starts at `from` in `bytes[0, size)`: a delimiter standing at
// `from` is stepped over, and the message ends at the next delimiter, or at the end of the
// bytes. A delimiter counts only with more than `reach` bytes from its start to the end.
// Candidates are the positions where both bytes of `pair` stand; for each,
// `isDelimiterAt(pos, behind)` says whether a delimiter starts there and, when one does, sets
// `behind` to the offset of the first byte behind it. Call it inside runGuarded.
template <class DelimiterTest>
inline MessageFrame frameMessage(const unsigned char *bytes, uint32_t size, uint32_t from,
                                 uint32_t reach, const BytePair &pair,
                                 DelimiterTest &&isDelimiterAt) {
  uint32_t start = from;
  uint32_t end = size;
  uint32_t pos = from;
  while (uint64_t{pos} + reach < size) {
    pos = findPair(bytes, pos, size - reach - 1, pair);
    if (pos == kByteNotFound)
      break;
    uint32_t behind = 0;
    if (!isDelimiterAt(pos, behind)) {
      ++pos;
      continue;
    }
    if (pos != start) {
      end = pos; // the delimiter of the next message
      break;
    }
    // The delimiter in front of this message: the message starts behind it.
    start = behind;
    pos = behind;
  }
  return MessageFrame{start, end - start};
}
