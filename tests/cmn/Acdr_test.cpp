// ACDR: the exact bytes a host reads, and the bounds of a small buffer. (A property block's
// bytes as a whole: store/MailProps.)
#include "cmn/Acdr.h"
#include <gtest/gtest.h>
#include <vector>

namespace {
using Bytes = std::vector<unsigned char>;

// A property in little: the count, a name, an empty value and a type code. The empty string
// leaves the type code three bytes short of alignment.
void writeSample(ACDR &out) {
  out << 7L << CString("subject") << CString("") << 1UL;
}

const Bytes kLittleEndianSample = {7,   0, 0, 0, 8, 0, 0, 0, 's', 'u', 'b', 'j', 'e', 'c',
                                   't', 0, 1, 0, 0, 0, 0, 0, 0,   0,   1,   0,   0,   0};

Bytes encode(void (*write)(ACDR &), int byteOrder, unsigned int size) {
  Bytes buffer(size);
  ACDR out(buffer.data(), size, 0, byteOrder, 0);
  write(out);
  buffer.resize(out.getUsed());
  return buffer;
}

TEST(AcdrTest, LongsAreThirtyTwoBitsAndStringsEndAtTheirFirstZero) {
  const auto write = [](ACDR &out) {
    out << static_cast<long>((1LL << 32) | 5) << -2L << 0xFFFFFFFFUL << CString("ab\0cd", 5);
  };
  const Bytes expected = {5,    0,    0, 0, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                          0xFF, 0xFF, 3, 0, 0,    0,    'a',  'b',  0};
  EXPECT_EQ(expected, encode(write, 1, 64));
}

TEST(AcdrTest, SmallBufferGetsNothingPastItsEndAndGetUsedCountsAll) {
  const unsigned int full = static_cast<unsigned int>(kLittleEndianSample.size());
  constexpr unsigned char kUntouched = 0xAA;
  for (unsigned int size = 0; size <= full; ++size) {
    Bytes buffer(full + 16, kUntouched);
    ACDR out(buffer.data(), size, 0, 1, 0);
    writeSample(out);
    EXPECT_EQ(full, out.getUsed()) << "size " << size;
    for (unsigned int at = 0; at < buffer.size(); ++at) {
      if (at >= size) {
        ASSERT_EQ(kUntouched, buffer[at]) << "size " << size << ", byte " << at;
      } else if (buffer[at] != kUntouched) {
        ASSERT_EQ(kLittleEndianSample[at], buffer[at]) << "size " << size << ", byte " << at;
      }
    }
    // A string that does not fit whole leaves even its count unwritten.
    EXPECT_TRUE((size < 8 || size >= 16) ||
                Bytes(4, kUntouched) == Bytes(buffer.begin() + 4, buffer.begin() + 8));
  }
  ACDR sizing(nullptr, 0, 0, 1, 0); // how a host learns the size it needs
  writeSample(sizing);
  EXPECT_EQ(full, sizing.getUsed());
}
} // namespace
