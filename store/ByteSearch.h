// Searches over a message's or a mailbox's bytes that test many positions per step, and
// BytePair, the two bytes of a pattern that they look for: the hot loops of the scans and of
// the header reader.
//
// Each reads only inside the bounds it is given; on mapped bytes, call it inside runGuarded.
#pragma once

#include <cstdint>

constexpr uint32_t kByteNotFound = UINT32_MAX;

// Two bytes of a pattern that a scan looks for together before it compares the whole: the
// byte that mail text holds least often (by a fixed ranking of byte values: control bytes,
// then rare punctuation, ... then lower-case letters and blanks) and the rarest byte of
// another value, the farthest of equally rare ones (or, where all bytes are alike, of another
// place). Together they stand in text at few places that are not the pattern, in base64 at
// none.
struct BytePair {
  uint32_t rare = 0;  // index in the pattern of the rarest byte
  uint32_t other = 0; // index of the second byte (the same for a pattern of one byte)
  unsigned char rareByte = 0;
  unsigned char otherByte = 0;
};
BytePair rarestPair(const unsigned char *pattern, uint32_t length);

// The first p with from <= p <= last where the pattern's two bytes stand at p + pair.rare
// and p + pair.other; kByteNotFound when there is none. Reads no byte outside
// [from + the smaller index, last + the larger index].
uint32_t findPair(const unsigned char *bytes, uint32_t from, uint32_t last, const BytePair &pair);

// The position of the first CR or LF in [from, end), or `end` when there is none.
uint32_t findLineEnd(const unsigned char *bytes, uint32_t from, uint32_t end);

// The first position in [from, end) at which a run of CR and LF bytes starts that holds one
// of them twice (the blank line behind a header block: "\n\n", "\r\r", "\r\n\r\n", ...), or
// `end` when there is none. A run of two different ones is a plain line end.
uint32_t findRepeatedLineEnd(const unsigned char *bytes, uint32_t from, uint32_t end);
