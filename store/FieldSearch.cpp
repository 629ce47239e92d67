// One pass over a header block for several header names: at each place that the names' first
// byte stands, every name not yet settled is compared.
#include "store/FieldSearch.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr int kMaxNamesAtOnce = 8;

unsigned char lower(unsigned char byte) {
  return (byte >= 'A' && byte <= 'Z') ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

unsigned char upper(unsigned char byte) {
  return (byte >= 'a' && byte <= 'z') ? static_cast<unsigned char>(byte - ('a' - 'A')) : byte;
}

bool hasCase(unsigned char byte) {
  const unsigned char folded = lower(byte);
  return folded >= 'a' && folded <= 'z';
}

// Whether the `length` bytes at `text` spell `name` without regard to ASCII case. The name's
// bytes are not zero, so a zero in the text is a difference, as _strnicmp finds it.
bool spells(const unsigned char *text, const char *name, uint32_t length) {
  for (uint32_t i = 0; i < length; ++i)
    if (lower(text[i]) != lower(static_cast<unsigned char>(name[i])))
      return false;
  return true;
}

struct Name {
  const char *text;
  uint32_t length;      // at least 1
  uint32_t lastStart;   // the last index at which the whole name fits the block
  int index;            // which result it fills
  unsigned char second; // the second byte in lower case, 0 for a name of one byte
};

// The search for one name alone, place by place.
int32_t findOne(const Name &name, const unsigned char *start) {
  const auto first = static_cast<unsigned char>(name.text[0]);
  for (uint32_t i = 0; i <= name.lastStart; ++i) {
    if (!hasCase(first)) {
      // A library search finds the first byte where case plays no part in it.
      const void *hit = std::memchr(start + i, first, name.lastStart - i + 1);
      if (hit == nullptr)
        return -1;
      i = static_cast<uint32_t>(static_cast<const unsigned char *>(hit) - start);
    } else if (lower(start[i]) != lower(first)) {
      continue;
    }
    if (spells(start + i + 1, name.text + 1, name.length - 1))
      return static_cast<int32_t>(i + name.length + 1);
  }
  return -1;
}

} // namespace

void findFields(const char *const names[], int count, const unsigned char *start,
                uint32_t searchLength, int32_t indexes[]) {
  Name pending[kMaxNamesAtOnce];
  int open = 0;
  bool together = true;
  for (int k = 0; k < count; ++k) {
    const auto length = static_cast<uint32_t>(std::strlen(names[k]));
    indexes[k] = -1;
    if (searchLength == 0 || length > searchLength)
      continue; // no place in the block can hold the name
    if (length == 0) {
      indexes[k] = 1; // every place matches an empty name: the first one, 0, wins
      continue;
    }
    const Name name = {names[k], length, searchLength - length, k,
                       static_cast<unsigned char>(
                           length > 1 ? lower(static_cast<unsigned char>(names[k][1])) : 0)};
    const auto first = static_cast<unsigned char>(name.text[0]);
    if (hasCase(first) || open == kMaxNamesAtOnce ||
        (open != 0 && first != static_cast<unsigned char>(pending[0].text[0]))) {
      together = false;
    }
    if (!together) {
      indexes[k] = findOne(name, start);
      continue;
    }
    pending[open++] = name;
  }
  if (open == 0)
    return;

  // The pending names start with the same caseless byte: visit each place where it stands
  // once, up to the last place that can hold any of them. Most places are the start of a line
  // that no name is, and the byte behind tells: a table gives, for each value of it, the
  // names that can start there.
  const auto first = static_cast<unsigned char>(pending[0].text[0]);
  uint8_t startsWith[256] = {};
  uint8_t anySecond = 0; // names of one byte, found wherever the first byte stands
  uint8_t unsettled = 0;
  uint32_t lastStart = 0, nearestLast = UINT32_MAX;
  for (int p = 0; p < open; ++p) {
    const Name &name = pending[p];
    const auto bit = static_cast<uint8_t>(1u << p);
    unsettled |= bit;
    lastStart = name.lastStart > lastStart ? name.lastStart : lastStart;
    nearestLast = name.lastStart < nearestLast ? name.lastStart : nearestLast;
    if (name.length == 1) {
      anySecond |= bit;
    } else {
      startsWith[name.second] |= bit;
      startsWith[upper(name.second)] |= bit;
    }
  }
  for (uint32_t i = 0; unsettled != 0 && i <= lastStart; ++i) {
    const void *hit = std::memchr(start + i, first, lastStart - i + 1);
    if (hit == nullptr)
      break;
    i = static_cast<uint32_t>(static_cast<const unsigned char *>(hit) - start);
    if (i > nearestLast) {
      // Names that no longer fit behind this place are settled as not found.
      nearestLast = UINT32_MAX;
      for (int p = 0; p < open; ++p) {
        const auto bit = static_cast<uint8_t>(1u << p);
        if ((unsettled & bit) == 0)
          continue;
        if (i > pending[p].lastStart)
          unsettled = static_cast<uint8_t>(unsettled & ~bit);
        else if (pending[p].lastStart < nearestLast)
          nearestLast = pending[p].lastStart;
      }
    }
    // i <= lastStart < searchLength; a name of two bytes or more fits only with i + 1 inside.
    const uint8_t second = i + 1 < searchLength ? startsWith[start[i + 1]] : 0;
    unsigned candidates = (second | anySecond) & unsettled;
    while (candidates != 0) {
      const int p = __builtin_ctz(candidates);
      candidates &= candidates - 1;
      const Name &name = pending[p];
      if (name.length > 2 && !spells(start + i + 2, name.text + 2, name.length - 2))
        continue;
      indexes[name.index] = static_cast<int32_t>(i + name.length + 1);
      unsettled = static_cast<uint8_t>(unsettled & ~(1u << p));
    }
  }
}
