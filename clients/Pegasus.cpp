// CPegasusMailFile: the generic scan, started behind the file header.
#include "clients/Pegasus.h"

#include "clients/Delimiters.h"

int CPegasusMailFile::init(const CString &path) {
  return initWith(path, kPegasusDelimiter, sizeof kPegasusDelimiter, sizeof kPegasusDelimiter);
}

int CPegasusMailFile::nextMessage() {
  msgOffset += msgLength;
  if (msgOffset == 0)
    msgOffset = kPegasusFileHeaderSize;
  // The header may lie beyond the end of a short file, so this is no test for equality.
  if (msgOffset >= fileSize) {
    msgLength = 0;
    return -1;
  }
  return scanFrom(msgOffset);
}
