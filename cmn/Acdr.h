// ACDR: a writer of OMG CDR (the Common Data Representation), as a host reads it.
//
// long and unsigned long are 4 bytes, aligned on 4 from the start of the buffer; a string is
// an unsigned long count of its bytes plus the terminating zero, then the bytes and the zero.
// Nothing is written past the buffer: an item that does not fit whole is not written, while
// getUsed still counts every byte that all items take.
#pragma once

#include "platform/CString.h"

#include <cstdint>

class ACDR {
public:
  // `byteOrder` 1 writes little-endian, 0 big-endian; `flags` is reserved and must be 0.
  ACDR(unsigned char *buffer, unsigned int size, unsigned int offset, int byteOrder, int flags);
  ACDR(const ACDR &) = delete;
  ACDR &operator=(const ACDR &) = delete;
  ~ACDR() = default;

  ACDR &operator<<(long value);          // written as 32 bits, signed
  ACDR &operator<<(unsigned long value); // written as 32 bits
  ACDR &operator<<(const CString &value);

  unsigned int getUsed() const { return used_; }

private:
  void align4();
  void putWord(uint32_t value);
  void putBytes(const void *bytes, unsigned int count);

  unsigned char *buffer_;
  unsigned int size_;
  unsigned int used_;
  bool littleEndian_;
};
