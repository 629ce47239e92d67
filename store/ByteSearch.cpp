// Byte searches 64 positions a step with AVX2 where the processor has it, 32 with SSE2
// (every x86-64 has that), one at a time elsewhere; all give the same answers.
#include "store/ByteSearch.h"

#include "store/VectorWidth.h"

#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

// How often a byte value turns up in mail, 0 for the rarest. Lower-case letters and blanks
// fill text; capitals, digits and line ends come next, with base64's alphabet among them;
// then the punctuation of text and addresses; bytes above 127 in 8-bit text; last the
// control bytes, which text and base64 never hold.
constexpr unsigned rankOf(unsigned char byte) {
  if (byte == ' ')
    return 10;
  if (byte >= 'a' && byte <= 'z')
    return 9;
  if (byte == '\n' || byte == '\r')
    return 8;
  if ((byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9'))
    return 7;
  switch (byte) {
  case '.':
  case ',':
  case '-':
  case ':':
  case '/':
  case '=':
  case '+':
  case '\t':
  case '\'':
  case '"':
  case '(':
  case ')':
  case ';':
  case '<':
  case '>':
  case '_':
    return 5;
  case '@':
  case '!':
  case '*':
  case '&':
  case '%':
  case '#':
    return 4;
  case '?':
  case '[':
  case ']':
  case '$':
  case '~':
  case '|':
  case '{':
  case '}':
  case '^':
  case '`':
  case '\\':
    return 3;
  default:
    return byte >= 0x80 ? 2 : 0;
  }
}

struct CommonnessTable {
  constexpr CommonnessTable() : rank() {
    for (unsigned byte = 0; byte < 256; ++byte)
      rank[byte] = static_cast<unsigned char>(rankOf(static_cast<unsigned char>(byte)));
  }
  unsigned char rank[256];
};
constexpr CommonnessTable kCommonness;

unsigned commonness(unsigned char byte) {
  return kCommonness.rank[byte];
}

bool pairAt(const unsigned char *bytes, uint32_t p, const BytePair &pair) {
  return bytes[p + pair.rare] == pair.rareByte && bytes[p + pair.other] == pair.otherByte;
}

uint32_t findPairOneByOne(const unsigned char *bytes, uint32_t p, uint32_t last,
                          const BytePair &pair) {
  for (;; ++p) {
    if (pairAt(bytes, p, pair))
      return p;
    if (p == last)
      return kByteNotFound;
  }
}

// A control byte stands in mail text hardly anywhere but in the pattern: the library's
// search for that byte alone runs through text fastest, and each place it stops is checked.
uint32_t findPairByRareByte(const unsigned char *bytes, uint32_t p, uint32_t last,
                            const BytePair &pair) {
  for (;;) {
    const unsigned char *rare = bytes + p + pair.rare;
    const void *hit = std::memchr(rare, pair.rareByte, last - p + 1);
    if (hit == nullptr)
      return kByteNotFound;
    p += static_cast<uint32_t>(static_cast<const unsigned char *>(hit) - rare);
    if (bytes[p + pair.other] == pair.otherByte)
      return p;
    if (p == last)
      return kByteNotFound;
    ++p;
  }
}

#if defined(__x86_64__)
unsigned firstBit(unsigned mask) {
  return static_cast<unsigned>(__builtin_ctz(mask));
}

// Both vector searches take the candidates p .. p + 63 (AVX2) or p + 31 (SSE2) a step and
// test both bytes of each at once: a rare byte of text ('?' in a question, '@' in an address)
// stands in every other step, and a test that branched on it first would guess wrong there.
// The few candidates left at the end go one by one.
__attribute__((target("avx2"), always_inline)) inline __m256i load(const unsigned char *at) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(at));
}

__attribute__((target("avx2"))) uint32_t findPairAvx2(const unsigned char *bytes, uint32_t p,
                                                      uint32_t last, const BytePair &pair) {
  const __m256i rares = _mm256_set1_epi8(static_cast<char>(pair.rareByte));
  const __m256i others = _mm256_set1_epi8(static_cast<char>(pair.otherByte));
  while (last - p >= 63) {
    const unsigned char *rare = bytes + p + pair.rare;
    const unsigned char *other = bytes + p + pair.other;
    const __m256i low = _mm256_and_si256(_mm256_cmpeq_epi8(load(rare), rares),
                                         _mm256_cmpeq_epi8(load(other), others));
    const __m256i high = _mm256_and_si256(_mm256_cmpeq_epi8(load(rare + 32), rares),
                                          _mm256_cmpeq_epi8(load(other + 32), others));
    if (!_mm256_testz_si256(_mm256_or_si256(low, high), _mm256_set1_epi8(-1))) {
      const auto lowMask = static_cast<unsigned>(_mm256_movemask_epi8(low));
      const auto highMask = static_cast<unsigned>(_mm256_movemask_epi8(high));
      return p + (lowMask != 0 ? firstBit(lowMask) : 32 + firstBit(highMask));
    }
    p += 64; // at most last + 1
    if (p > last)
      return kByteNotFound;
  }
  return findPairOneByOne(bytes, p, last, pair);
}

uint32_t findPairSse2(const unsigned char *bytes, uint32_t p, uint32_t last, const BytePair &pair) {
  const __m128i rares = _mm_set1_epi8(static_cast<char>(pair.rareByte));
  const __m128i others = _mm_set1_epi8(static_cast<char>(pair.otherByte));
  const auto load = [](const unsigned char *at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
  };
  while (last - p >= 31) {
    const unsigned char *rare = bytes + p + pair.rare;
    const unsigned char *other = bytes + p + pair.other;
    const auto low = static_cast<unsigned>(_mm_movemask_epi8(
        _mm_and_si128(_mm_cmpeq_epi8(load(rare), rares), _mm_cmpeq_epi8(load(other), others))));
    const auto high = static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(
        _mm_cmpeq_epi8(load(rare + 16), rares), _mm_cmpeq_epi8(load(other + 16), others))));
    if ((low | high) != 0)
      return p + (low != 0 ? firstBit(low) : 16 + firstBit(high));
    p += 32;
    if (p > last)
      return kByteNotFound;
  }
  return findPairOneByOne(bytes, p, last, pair);
}

#endif

bool isLineEnd(unsigned char byte) {
  return byte == '\n' || byte == '\r';
}

// Whether a run with a repeated line end starts at p, seeing no byte at or past `end`.
bool repeatAt(const unsigned char *bytes, uint32_t p, uint32_t end) {
  if (!isLineEnd(bytes[p]) || p + 1 >= end || !isLineEnd(bytes[p + 1]))
    return false;
  return bytes[p] == bytes[p + 1] || (p + 2 < end && isLineEnd(bytes[p + 2]));
}

uint32_t findRepeatedLineEndOneByOne(const unsigned char *bytes, uint32_t p, uint32_t end) {
  for (; p < end; ++p)
    if (repeatAt(bytes, p, end))
      return p;
  return end;
}

#if defined(__x86_64__)
// A run starts at p with a repeat where p and p + 1 are line ends and either they are equal
// or p + 2 is one too: a run of three always repeats a byte. The first such p of a walk from
// the left is a run's start, for at the start of the same run it would have held already.
__attribute__((target("avx2"), always_inline)) inline __m256i lineEnds(__m256i block) {
  return _mm256_or_si256(_mm256_cmpeq_epi8(block, _mm256_set1_epi8('\n')),
                         _mm256_cmpeq_epi8(block, _mm256_set1_epi8('\r')));
}

__attribute__((target("avx2"))) uint32_t findRepeatedLineEndAvx2(const unsigned char *bytes,
                                                                 uint32_t p, uint32_t end) {
  while (end - p >= 34) {
    const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes + p));
    const __m256i next = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes + p + 1));
    const __m256i after = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes + p + 2));
    const __m256i pairs = _mm256_and_si256(lineEnds(here), lineEnds(next));
    const __m256i repeats =
        _mm256_and_si256(pairs, _mm256_or_si256(_mm256_cmpeq_epi8(here, next), lineEnds(after)));
    const auto mask = static_cast<unsigned>(_mm256_movemask_epi8(repeats));
    if (mask != 0)
      return p + firstBit(mask);
    p += 32;
  }
  return findRepeatedLineEndOneByOne(bytes, p, end);
}

inline __m128i lineEnds(__m128i block) {
  return _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('\n')),
                      _mm_cmpeq_epi8(block, _mm_set1_epi8('\r')));
}

uint32_t findRepeatedLineEndSse2(const unsigned char *bytes, uint32_t p, uint32_t end) {
  while (end - p >= 18) {
    const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + p));
    const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + p + 1));
    const __m128i after = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + p + 2));
    const __m128i pairs = _mm_and_si128(lineEnds(here), lineEnds(next));
    const __m128i repeats =
        _mm_and_si128(pairs, _mm_or_si128(_mm_cmpeq_epi8(here, next), lineEnds(after)));
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(repeats));
    if (mask != 0)
      return p + firstBit(mask);
    p += 16;
  }
  return findRepeatedLineEndOneByOne(bytes, p, end);
}
#endif

} // namespace

uint32_t findRepeatedLineEnd(const unsigned char *bytes, uint32_t from, uint32_t end) {
  if (from >= end)
    return end;
#if defined(__x86_64__)
  if (useAvx2())
    return findRepeatedLineEndAvx2(bytes, from, end);
  if (useSse2())
    return findRepeatedLineEndSse2(bytes, from, end);
#endif
  return findRepeatedLineEndOneByOne(bytes, from, end);
}

namespace {

uint32_t distance(uint32_t a, uint32_t b) {
  return a > b ? a - b : b - a;
}

} // namespace

BytePair rarestPair(const unsigned char *pattern, uint32_t length) {
  BytePair pair;
  if (length == 0)
    return pair;
  uint32_t rarest = 0;
  for (uint32_t i = 1; i < length; ++i)
    if (commonness(pattern[i]) < commonness(pattern[rarest]))
      rarest = i;
  // The rarest of the other bytes, one of another value where there is one.
  uint32_t other = rarest;
  for (uint32_t i = 0; i < length; ++i) {
    if (i == rarest)
      continue;
    if (other == rarest) {
      other = i;
      continue;
    }
    const bool newValue = pattern[i] != pattern[rarest];
    const bool otherNewValue = pattern[other] != pattern[rarest];
    if (newValue != otherNewValue) {
      if (newValue)
        other = i;
    } else if (commonness(pattern[i]) < commonness(pattern[other]) ||
               (commonness(pattern[i]) == commonness(pattern[other]) &&
                distance(i, rarest) > distance(other, rarest))) {
      // Of bytes as common, the farthest: neighbouring bytes go together in words ("Fr" of
      // "From" starts "Friday" and "Free"), bytes further apart much less.
      other = i;
    }
  }
  pair.rare = rarest;
  pair.other = other;
  pair.rareByte = pattern[rarest];
  pair.otherByte = pattern[other];
  return pair;
}

uint32_t findPair(const unsigned char *bytes, uint32_t from, uint32_t last, const BytePair &pair) {
  if (from > last)
    return kByteNotFound;
  if (commonness(pair.rareByte) == 0)
    return findPairByRareByte(bytes, from, last, pair);
#if defined(__x86_64__)
  if (useAvx2())
    return findPairAvx2(bytes, from, last, pair);
  if (useSse2())
    return findPairSse2(bytes, from, last, pair);
#endif
  return findPairOneByOne(bytes, from, last, pair);
}

uint32_t findLineEnd(const unsigned char *bytes, uint32_t from, uint32_t end) {
  if (from >= end)
    return end;
  uint32_t p = from;
#if defined(__x86_64__)
  const __m128i lineFeeds = _mm_set1_epi8('\n');
  const __m128i returns = _mm_set1_epi8('\r');
  const bool vectors = useSse2();
  while (vectors && end - p >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + p));
    const unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(
        _mm_or_si128(_mm_cmpeq_epi8(block, lineFeeds), _mm_cmpeq_epi8(block, returns))));
    if (mask != 0)
      return p + firstBit(mask);
    p += 16;
  }
#endif
  while (p < end && bytes[p] != '\n' && bytes[p] != '\r')
    ++p;
  return p;
}
