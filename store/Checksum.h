// The message checksum's kernels: the XOR of a range with byte i at shift 8 * (i mod 4), and
// the same taken while the range is copied, so that a body is read once for both.
#pragma once

#include <cstdint>

// The checksum of `length` bytes at `start`, byte i counted from `start`; 0 for none.
uint32_t checksumBytes(const unsigned char *start, uint32_t length);

// Copies `length` bytes from `source` to `target` (which must not overlap) and gives their
// checksum, byte i counted from `source`.
uint32_t copyWithChecksum(unsigned char *target, const unsigned char *source, uint32_t length);

// The checksum of bytes that stand `offset` bytes into a range, as part of the range's
// checksum: `sum`, taken from their own first byte, turned by offset mod 4 bytes.
inline uint32_t checksumAt(uint32_t sum, uint32_t offset) {
  const unsigned shift = 8 * (offset % 4);
  return shift == 0 ? sum : (sum << shift) | (sum >> (32 - shift));
}
