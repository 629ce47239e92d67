// Checksum kernels: 64 bytes a step in AVX2 registers where the processor has them, in four
// 64-bit lanes elsewhere. XOR is associative, so any grouping of the words gives the same sum
// as four bytes at a time: folding a wide lane's halves puts byte i at 8 * (i mod 4).
#include "store/Checksum.h"

#include "store/VectorWidth.h"

#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

uint64_t load64(const unsigned char *bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  word = __builtin_bswap64(word);
#endif
  return word;
}

uint32_t fold(uint64_t wide) {
  return static_cast<uint32_t>(wide) ^ static_cast<uint32_t>(wide >> 32);
}

// The bytes from `i` on that the wide loops left, 8, then 4, then one at a time.
uint32_t tail(unsigned char *target, const unsigned char *source, uint32_t i, uint32_t length,
              uint64_t wide) {
  for (; i + 8 <= length; i += 8) {
    wide ^= load64(source + i);
    if (target)
      std::memcpy(target + i, source + i, 8);
  }
  uint32_t sum = fold(wide);
  for (unsigned shift = 0; i < length; ++i, shift = (shift + 8) % 32) {
    sum ^= static_cast<uint32_t>(source[i]) << shift;
    if (target)
      target[i] = source[i];
  }
  return sum;
}

// Four independent lanes of 8 bytes: 32 bytes a step. Copies too when `target` is given.
uint32_t lanes(unsigned char *target, const unsigned char *source, uint32_t length) {
  uint64_t lane[4] = {0, 0, 0, 0};
  uint32_t i = 0;
  for (; i + 32 <= length; i += 32) {
    lane[0] ^= load64(source + i);
    lane[1] ^= load64(source + i + 8);
    lane[2] ^= load64(source + i + 16);
    lane[3] ^= load64(source + i + 24);
    if (target)
      std::memcpy(target + i, source + i, 32);
  }
  return tail(target, source, i, length, lane[0] ^ lane[1] ^ lane[2] ^ lane[3]);
}

#if defined(__x86_64__)
// Two 32-byte lanes: 64 bytes a step. Each 32-byte lane's eight 4-byte words fold into one
// sum with byte i of a word at 8 * i, as the range's bytes lie at offsets that are multiples
// of 4 from its start.
template <bool kCopy>
__attribute__((target("avx2"))) uint32_t wideLanes(unsigned char *target,
                                                   const unsigned char *source, uint32_t length) {
  __m256i low = _mm256_setzero_si256();
  __m256i high = _mm256_setzero_si256();
  uint32_t i = 0;
  for (; i + 64 <= length; i += 64) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source + i));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source + i + 32));
    low = _mm256_xor_si256(low, a);
    high = _mm256_xor_si256(high, b);
    if (kCopy) {
      _mm256_storeu_si256(reinterpret_cast<__m256i *>(target + i), a);
      _mm256_storeu_si256(reinterpret_cast<__m256i *>(target + i + 32), b);
    }
  }
  const __m256i both = _mm256_xor_si256(low, high);
  const __m128i half =
      _mm_xor_si128(_mm256_castsi256_si128(both), _mm256_extracti128_si256(both, 1));
  uint64_t wide = static_cast<uint64_t>(_mm_cvtsi128_si64(half)) ^
                  static_cast<uint64_t>(_mm_extract_epi64(half, 1));
  return tail(kCopy ? target : nullptr, source, i, length, wide);
}
#endif

} // namespace

uint32_t checksumBytes(const unsigned char *start, uint32_t length) {
#if defined(__x86_64__)
  if (length >= 64 && useAvx2())
    return wideLanes<false>(nullptr, start, length);
#endif
  return lanes(nullptr, start, length);
}

uint32_t copyWithChecksum(unsigned char *target, const unsigned char *source, uint32_t length) {
#if defined(__x86_64__)
  if (length >= 64 && useAvx2())
    return wideLanes<true>(target, source, length);
#endif
  return lanes(target, source, length);
}
