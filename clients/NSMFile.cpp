// CNetscapeMailFile: the Netscape store's scan. A message starts behind a line that the
// delimiter format reads whole, so that a line of text that only starts with "From" does not
// split the mailbox.
#include "clients/NSMFile.h"

#include "clients/Delimiters.h"
#include "clients/ScanFormat.h"
#include "include/tuk/AgentLog.h"
#include "store/ByteSearch.h"
#include "store/DelimiterScan.h"

#include <cstring>

AGENT_LOG_SOURCE(".\\NSMFile");

namespace {

// The bytes of the delimiter ("From") that a position must show before its line is parsed.
constexpr uint32_t kQuickTestLength = 4;

// A line up to this long is tested for the format's colons before it is parsed; a longer
// one goes to the parse, whose reach its fields bound, so that "From" after "From" on one
// long line costs no pass over the rest of the line each.
constexpr uint32_t kColonTestReach = 256;

// Lines are logged up to this many bytes.
constexpr uint32_t kLoggedLineBytes = 256;

// The colons of the delimiter format: the literals between the numbers of the time.
constexpr size_t colonsOf(const char *format) {
  size_t colons = 0;
  for (; *format; ++format)
    colons += *format == ':';
  return colons;
}
constexpr size_t kFormatColons = colonsOf(kNetscapeDelimiterText);

// False when the line is short enough to tell and holds fewer colons than the format (whose
// text the delimiter buffer always holds): a line that the format reads whole has them.
bool mayHoldFormatColons(const unsigned char *line, uint32_t length) {
  if (length > kColonTestReach)
    return true;
  const unsigned char *const end = line + length;
  size_t wanted = kFormatColons;
  for (const unsigned char *p = line; wanted != 0; --wanted, ++p) {
    p = static_cast<const unsigned char *>(std::memchr(p, ':', static_cast<size_t>(end - p)));
    if (p == nullptr)
      return false;
  }
  return true;
}

} // namespace

int CNetscapeMailFile::init(const CString &path) {
  return initWith(path, kNetscapeDelimiterText, kNetscapeDelimiterLength, kNetscapeDelimiterBuffer);
}

void CNetscapeMailFile::mailboxChanged() {
  searchedFrom_ = 0;
  lineFeedAt_ = 0;
  delimiterLineAt_ = kNoDelimiterLine;
}

uint32_t CNetscapeMailFile::findLineFeed(uint32_t from) {
  if (from < searchedFrom_ || from > lineFeedAt_) {
    const void *hit = std::memchr(mapBase.get() + from, '\n', fileSize - from);
    lineFeedAt_ =
        hit ? static_cast<uint32_t>(static_cast<const unsigned char *>(hit) - mapBase.get())
            : fileSize;
  }
  searchedFrom_ = from;
  return lineFeedAt_;
}

bool CNetscapeMailFile::isDelimiterLine(uint32_t pos, uint32_t lineFeed) {
  const unsigned char *line = mapBase.get() + pos;
  const uint32_t lineLength = lineFeed - pos + 1;
  // With the log off, a short line without the format's colons is refused unparsed: the
  // parse could not read it whole. Most text that starts with "From" ("From: ...", "From what
  // I hear") has at most one. With the log on, every candidate is parsed and logged.
  if (!(logEnabled && logSink) && !mayHoldFormatColons(line, lineLength))
    return false;
  AGENT_LOG("Size of sBuf: %d", static_cast<int>(lineLength + 1));
  if (logEnabled) {
    // The host's sink must never read mapped bytes: a file cut short now would fault inside
    // the host's own code. The line goes out as a copy.
    char logged[kLoggedLineBytes + 1];
    const uint32_t loggedLength = lineLength < kLoggedLineBytes ? lineLength : kLoggedLineBytes;
    std::memcpy(logged, line, loggedLength);
    logged[loggedLength] = 0;
    AGENT_LOG("sBuf: %s", logged);
  }
  ScanFields fields;
  // The delimiter buffer always holds the format's text: it is read into directives once.
  static const ScanProgram format(kNetscapeDelimiterText);
  const bool counted = format.scan(line, line + lineLength, fields) == 8;
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
  // The delimiter buffer always holds the format's text: its pair is chosen once.
  static const BytePair quick =
      rarestPair(reinterpret_cast<const unsigned char *>(kNetscapeDelimiterText), kQuickTestLength);
  // The quick test: "From" at pos, with more than the delimiter's length of the file from
  // there on; two of its four bytes are looked for together, as any one alone stands every
  // 64 bytes of base64. Only a position that passes it, and has a line feed behind it, is
  // parsed.
  const MessageFrame frame = frameMessage(
      base, fileSize, msgOffset, delimiterLength, quick, [&](uint32_t pos, uint32_t &behind) {
        if (std::memcmp(base + pos, format, kQuickTestLength) != 0)
          return false;
        const uint32_t lineFeed = findLineFeed(pos + kQuickTestLength);
        if (lineFeed == fileSize || !(pos == delimiterLineAt_ || isDelimiterLine(pos, lineFeed)))
          return false;
        delimiterLineAt_ = pos;
        behind = lineFeed + 1;
        return true;
      });
  msgOffset = frame.offset;
  msgLength = frame.length;
  return 0;
}
