// ACDR: CDR encoding of longs, unsigned longs and strings into a bounded buffer.
#include "cmn/Acdr.h"

#include <cstring>

namespace {

// Whether `count` bytes from `used` on lie inside a buffer of `size` bytes, without overflow.
bool fits(unsigned int size, unsigned int used, unsigned int count) {
  return used <= size && count <= size - used;
}

} // namespace

// Writing starts at `offset`, and getUsed counts from the start of the buffer, so that the
// alignment and the end of the data are both positions in the buffer (offset is 0 in practice).
ACDR::ACDR(unsigned char *buffer, unsigned int size, unsigned int offset, int byteOrder,
           int /*flags*/)
    : buffer_(buffer), size_(buffer != nullptr ? size : 0), used_(offset),
      littleEndian_(byteOrder != 0) {}

ACDR &ACDR::operator<<(long value) {
  // long is 8 bytes on LP64 builds; the encoding's long is 4, so keep the low 32 bits.
  putWord(static_cast<uint32_t>(value));
  return *this;
}

ACDR &ACDR::operator<<(unsigned long value) {
  putWord(static_cast<uint32_t>(value));
  return *this;
}

ACDR &ACDR::operator<<(const CString &value) {
  // A host reads the string as a C string, so it ends at the first zero byte of the CString:
  // the count is the bytes up to there plus the terminating zero.
  const char *text = value.GetString();
  const unsigned int length =
      static_cast<unsigned int>(::strnlen(text, static_cast<size_t>(value.GetLength())));
  align4();
  // The count, the bytes and the zero are one item: all of it is written, or none.
  if (!fits(size_, used_, 4 + length + 1)) {
    used_ += 4 + length + 1;
    return *this;
  }
  putWord(length + 1);
  putBytes(text, length);
  putBytes("", 1);
  return *this;
}

void ACDR::align4() {
  // Padding is counted from the start of the buffer; the pad bytes inside it are zeros.
  while (used_ % 4 != 0) {
    if (used_ < size_)
      buffer_[used_] = 0;
    ++used_;
  }
}

void ACDR::putWord(uint32_t value) {
  align4();
  unsigned char bytes[4];
  for (int at = 0; at < 4; ++at) {
    const int shift = littleEndian_ ? 8 * at : 8 * (3 - at);
    bytes[at] = static_cast<unsigned char>(value >> shift);
  }
  putBytes(bytes, 4);
}

void ACDR::putBytes(const void *bytes, unsigned int count) {
  if (count > 0 && fits(size_, used_, count))
    std::memcpy(buffer_ + used_, bytes, count);
  used_ += count;
}
