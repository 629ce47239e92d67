// The byte-at-a-time references.
#include "tests/support/Reference.h"

uint32_t referenceChecksum(const uint8_t *bytes, size_t length) {
  uint32_t sum = 0;
  for (size_t i = 0; i < length; ++i)
    sum ^= static_cast<uint32_t>(bytes[i]) << (8 * (i % 4));
  return sum;
}

uint32_t referenceHeaderLength(const uint8_t *bytes, uint32_t length) {
  uint32_t returns = 0, feeds = 0;
  for (uint32_t i = 0; i < length; ++i) {
    if (bytes[i] == '\n') {
      if (++feeds >= 2)
        return i + 1;
    } else if (bytes[i] == '\r') {
      if (++returns >= 2)
        return i + 1 < length && bytes[i + 1] == '\n' ? i + 2 : i + 1;
    } else {
      returns = feeds = 0;
    }
  }
  return length;
}

namespace {
uint8_t lower(uint8_t byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<uint8_t>(byte + 32) : byte;
}
} // namespace

int32_t referenceFieldStart(const std::string &name, const uint8_t *block, uint32_t searchLength) {
  if (searchLength == 0 || name.size() > searchLength)
    return -1;
  for (uint32_t i = 0; i + name.size() <= searchLength; ++i) {
    size_t same = 0;
    while (same < name.size() && lower(block[i + same]) == lower(static_cast<uint8_t>(name[same])))
      ++same;
    if (same == name.size())
      return static_cast<int32_t>(i + name.size() + 1);
  }
  return -1;
}
