// References written from the definitions, a byte at a time, that the tests and the fuzz
// targets hold the fast code against. Nothing here may share code with what it checks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The checksum a host expects: byte i XORed in at shift 8 * (i mod 4).
uint32_t referenceChecksum(const uint8_t *bytes, size_t length);
inline uint32_t referenceChecksum(const std::string &bytes) {
  return referenceChecksum(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
}

// The header block's length: it ends behind two CRs or two LFs, each kind counted without regard to
// the other and any other byte setting both counts back; a CR pair takes an LF behind it along.
uint32_t referenceHeaderLength(const uint8_t *bytes, uint32_t length);

// Where the value of the field `name` starts: one byte behind the first place in the first
// `searchLength` bytes where the whole name stands, ASCII case aside; -1 when it stands nowhere.
int32_t referenceFieldStart(const std::string &name, const uint8_t *block, uint32_t searchLength);
