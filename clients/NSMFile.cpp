// The Netscape store's scan: a message starts behind a line that the delimiter format reads
// whole, so that a line of text that only starts with "From" does not split the mailbox.
#include "clients/Netscape.h"

#include "agent/Log.h"
#include "clients/Delimiters.h"
#include "clients/ScanFormat.h"

#include <cstring>

AGENT_LOG_SOURCE(".\\NSMFile");

int CNetscapeMailFile::init(const CString &path) {
  return initWith(path, kNetscapeDelimiterText, kNetscapeDelimiterLength, kNetscapeDelimiterBuffer);
}

void CNetscapeMailFile::mailboxChanged() {
  searchedFrom_ = 0;
  lineFeedAt_ = 0;
}

uint32_t CNetscapeMailFile::findLineFeed(uint32_t from) {
  if (from < searchedFrom_ || from > lineFeedAt_) {
    const void *hit = std::memchr(mapBase.get() + from, '\n', fileSize - from);
    lineFeedAt_ = hit ? static_cast<uint32_t>(static_cast<const unsigned char *>(hit) - mapBase.get())
                      : fileSize;
  }
  searchedFrom_ = from;
  return lineFeedAt_;
}

bool CNetscapeMailFile::isDelimiterLine(uint32_t pos, uint32_t lineFeed) {
  const unsigned char *line = mapBase.get() + pos;
  const uint32_t lineLength = lineFeed - pos + 1;
  AGENT_LOG("Size of sBuf: %d", static_cast<int>(lineLength + 1));
  AGENT_LOG("sBuf: %.*s", static_cast<int>(lineLength), reinterpret_cast<const char *>(line));
  ScanFields fields = {};
  const bool counted =
      scanFormat(reinterpret_cast<const char *>(delimiter.get()), line, line + lineLength, fields) == 8;
  AGENT_LOG("From %s %s %s %d %d:%d:%d %d", fields.words[0], fields.words[1], fields.words[2],
            fields.numbers[0], fields.numbers[1], fields.numbers[2], fields.numbers[3],
            fields.numbers[4]);
  return counted;
}

int CNetscapeMailFile::nextMessage() {
  AGENT_LOG("File: %s, size: %d", fileName.GetString(), static_cast<int>(fileSize));
  msgOffset += msgLength;
  if (msgOffset >= fileSize) {
    msgLength = 0;
    return -1;
  }
  const unsigned char *const base = mapBase.get();
  const unsigned char *const format = delimiter.get();
  uint32_t pos = msgOffset;
  uint32_t end = fileSize;
  // The quick test: "From" at pos, with more than the delimiter's length of the file from
  // there on. Only a position that passes it, and has a line feed behind it, is parsed.
  while (uint64_t{pos} + delimiterLength < fileSize) {
    const uint32_t lastStart = fileSize - delimiterLength - 1;
    const void *hit = std::memchr(base + pos, format[0], lastStart - pos + 1);
    if (hit == nullptr)
      break;
    pos = static_cast<uint32_t>(static_cast<const unsigned char *>(hit) - base);
    if (std::memcmp(base + pos + 1, format + 1, 3) != 0) {
      ++pos;
      continue;
    }
    const uint32_t lineFeed = findLineFeed(pos + 4);
    if (lineFeed == fileSize || !isDelimiterLine(pos, lineFeed)) {
      ++pos;
      continue;
    }
    if (pos != msgOffset) {
      end = pos;  // the delimiter line of the next message
      break;
    }
    // The delimiter line in front of this message: the message starts behind it.
    msgOffset = lineFeed + 1;
    pos = msgOffset;
  }
  msgLength = end - msgOffset;
  return 0;
}
