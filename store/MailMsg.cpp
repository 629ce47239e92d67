// CMailMsg: checksum, header block, fields and body of one message, and its body stream.
#include "store/MailMsg.h"

#include "include/tuk/AgentAbi.h"
#include "include/tuk/AgentLog.h"
#include "platform/FaultGuard.h"
#include "store/ByteSearch.h"
#include "store/Checksum.h"
#include "store/FieldSearch.h"
#include "store/MAILDATE.h"
#include "store/MailHeaders.h"

#include <cstring>

AGENT_LOG_SOURCE(".\\MailMsg");

namespace {

// The five fields. A walk's record needs only the date, and the line its message logs the
// subject too.
enum Field { kDate, kSubject, kTo, kFrom, kCc, kFieldCount };

struct FieldSpan {
  int32_t index;
  uint32_t length;
};

// What a first pass over the header block finds, before anything is allocated.
struct MessageLayout {
  uint32_t headerLength;
  FieldSpan fields[kFieldCount];
};

} // namespace

uint32_t CMailMsg::computeChecksum(const unsigned char *start, uint32_t length) {
  return checksumBytes(start, length);
}

uint32_t CMailMsg::getHeaderLength(const unsigned char *start, uint32_t length) const {
  // Only runs of CR and LF bytes count: any other byte sets both counts back to 0. Only a run
  // that holds a byte twice can end the block: the scan leaps to the first such run and
  // counts within it, from 0.
  uint32_t i = 0;
  for (;;) {
    i = findRepeatedLineEnd(start, i, length);
    uint32_t carriageReturns = 0;
    uint32_t lineFeeds = 0;
    for (; i < length; ++i) {
      const unsigned char byte = start[i];
      if (byte == '\n') {
        if (++lineFeeds >= 2)
          return i + 1;
      } else if (byte == '\r') {
        if (++carriageReturns >= 2)
          return (i + 1 < length && start[i + 1] == '\n') ? i + 2 : i + 1;
      } else {
        break;
      }
    }
    if (i == length)
      return length;
  }
}

int CMailMsg::init(const unsigned char *start, uint32_t length, const CString &mailboxPath) {
  return build(start, length, &mailboxPath);
}

int CMailMsg::initRecord(const unsigned char *start, uint32_t length) {
  return build(start, length, nullptr);
}

int CMailMsg::build(const unsigned char *start, uint32_t length, const CString *mailboxPath) {
  const char *const names[kFieldCount] = {hdrDate.GetString(), hdrSubject.GetString(),
                                          hdrTo.GetString(), hdrFrom.GetString(),
                                          hdrCc.GetString()};
  CString *const values[kFieldCount] = {&date, &subject, &to, &from, &cc};
  const bool whole = mailboxPath != nullptr;
  const bool logging = logEnabled && logSink;
  const int fieldCount = whole ? kFieldCount : logging ? kSubject + 1 : kDate + 1;

  // The bytes may be a mapping that another process cuts short at any moment: read them in
  // two guarded passes, the first over the header block to measure, the second to copy into
  // what was allocated between them, so that a fault never leaves anything half-owned. The
  // checksum is taken in the second pass, as the body is copied: its bytes are read once.
  MessageLayout layout{};
  const bool measured = runGuarded([&] {
    layout.headerLength = getHeaderLength(start, length);
    int32_t indexes[kFieldCount];
    findFields(names, fieldCount, start, layout.headerLength, indexes);
    for (int field = 0; field < fieldCount; ++field) {
      FieldSpan &span = layout.fields[field];
      span.index = indexes[field];
      span.length = fieldValueLength(span.index, start, layout.headerLength);
    }
  });
  if (!measured)
    return -1;

  position = 0;
  const uint32_t headerLength = layout.headerLength;
  // A record's message keeps no body: the walk needs only its checksum.
  bodyLength = whole ? length - headerLength : 0;

  AGENT_LOG("Searching for subject as: %s", hdrSubject.GetString());
  for (int field = 0; field < fieldCount; ++field)
    values[field]->bytes().assign(layout.fields[field].length, '\0');
  if (bodyLength == 0) {
    body.reset();
  } else {
    body.reset(static_cast<unsigned char *>(std::malloc(size_t{bodyLength} + 1)));
    if (!body)
      return -1;
  }

  uint32_t sum = 0;
  unsigned char *const bodyBytes = body.get();
  const bool copied = runGuarded([&] {
    for (int field = 0; field < fieldCount; ++field) {
      const FieldSpan &span = layout.fields[field];
      if (span.length != 0)
        std::memcpy(&values[field]->bytes()[0], start + span.index, span.length);
    }
    sum = checksumBytes(start, whole ? headerLength : length);
    if (bodyLength != 0) {
      const uint32_t bodySum = copyWithChecksum(bodyBytes, start + headerLength, bodyLength);
      sum ^= checksumAt(bodySum, headerLength);
      bodyBytes[bodyLength] = 0;
    }
  });
  if (!copied)
    return -1;
  checksum = sum;
  AGENT_LOG("Subject: %s\n", subject.GetString());

  if (whole)
    mailbox = *mailboxPath;
  initialised = 1;
  return 0;
}

int32_t CMailMsg::read(void *destination, uint32_t count, uint32_t *countRead) {
  const uint32_t remaining = bodyLength - position;
  const uint32_t n = count < remaining ? count : remaining;
  *countRead = n;
  if (n == 0)
    return StatusEndOfData;
  std::memcpy(destination, body.get() + position, n);
  position += n;
  return StatusOk;
}

int32_t CMailMsg::seek(int32_t origin, int32_t offset) {
  uint32_t target;
  switch (origin) {
  case 0:
    if (offset < 0 || static_cast<uint32_t>(offset) >= bodyLength)
      return StatusSeekOutOfRange;
    target = static_cast<uint32_t>(offset);
    break;
  case 1:
    target = position + static_cast<uint32_t>(offset);
    if (target >= bodyLength)
      return StatusSeekOutOfRange;
    break;
  case 2: {
    // Counted from the last byte, not from behind it: offset 0 is the last byte.
    const int64_t wanted = int64_t{bodyLength} - 1 + offset;
    if (offset > 0 || wanted < 0 || wanted >= int64_t{bodyLength})
      return StatusSeekOutOfRange;
    target = static_cast<uint32_t>(wanted);
    break;
  }
  default:
    return StatusOk;
  }
  position = target;
  return StatusOk;
}

int32_t CMailMsg::tell(uint32_t *out) const {
  *out = position;
  return StatusOk;
}

int CMailMsg::verifyChecksum(const uint32_t &sum) const {
  if (sum == checksum)
    return 1;
  AGENT_LOG("Your sum 0x%x != mine 0x%x\n", sum, checksum);
  return 0;
}

void CMailMsg::getBody(CString &out) const {
  if (bodyLength == 0 || !body)
    out.Empty();
  else
    out = reinterpret_cast<const char *>(body.get());
}

void CMailMsg::getDateFields(int32_t *day, int32_t *month, int32_t *year, int32_t *hour,
                             int32_t *minute, int32_t *second) const {
  if (!date.IsEmpty()) {
    const CMailDate parsed(date);
    *day = parsed.getDay();
    if (*day != -1) {
      *month = parsed.getMonth();
      *year = parsed.getYear();
      *hour = parsed.getHour();
      *minute = parsed.getMinute();
      *second = parsed.getSecond();
      return;
    }
  }
  *day = 1;
  *month = 1;
  *year = 71;
  *hour = 0;
  *minute = 0;
  *second = 0;
}
