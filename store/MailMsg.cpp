// CMailMsg: checksum, header block, fields and body of one message, and its body stream.
#include "store/MailMsg.h"

#include "agent/AgentAbi.h"
#include "agent/Log.h"
#include "platform/FaultGuard.h"
#include "store/MAILDATE.h"
#include "store/MailHeaders.h"

#include <cstring>

AGENT_LOG_SOURCE(".\\MailMsg");

namespace {

// The five fields in the order they are filled.
enum Field { kDate, kTo, kFrom, kSubject, kCc, kFieldCount };

struct FieldSpan {
  int32_t index;
  uint32_t length;
};

// What a first pass over the message's bytes finds, before anything is allocated.
struct MessageLayout {
  uint32_t checksum;
  uint32_t headerLength;
  FieldSpan fields[kFieldCount];
};

uint32_t loadLittleEndian32(const unsigned char *bytes) {
  return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
         static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

uint64_t loadLittleEndian64(const unsigned char *bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  word = __builtin_bswap64(word);
#endif
  return word;
}

} // namespace

uint32_t CMailMsg::computeChecksum(const unsigned char *start, uint32_t length) {
  // XOR is associative, so eight bytes at a time in four independent lanes give the same sum
  // as four bytes at a time: folding a 64-bit word's halves puts byte i at 8 * (i mod 4).
  uint64_t lanes[4] = {0, 0, 0, 0};
  uint32_t i = 0;
  for (; i + 32 <= length; i += 32) {
    lanes[0] ^= loadLittleEndian64(start + i);
    lanes[1] ^= loadLittleEndian64(start + i + 8);
    lanes[2] ^= loadLittleEndian64(start + i + 16);
    lanes[3] ^= loadLittleEndian64(start + i + 24);
  }
  for (; i + 8 <= length; i += 8)
    lanes[0] ^= loadLittleEndian64(start + i);
  const uint64_t wide = lanes[0] ^ lanes[1] ^ lanes[2] ^ lanes[3];
  uint32_t sum = static_cast<uint32_t>(wide) ^ static_cast<uint32_t>(wide >> 32);
  if (i + 4 <= length) {
    sum ^= loadLittleEndian32(start + i);
    i += 4;
  }
  for (unsigned shift = 0; i < length; ++i, shift += 8)
    sum ^= static_cast<uint32_t>(start[i]) << shift;
  return sum;
}

uint32_t CMailMsg::getHeaderLength(const unsigned char *start, uint32_t length) const {
  uint32_t carriageReturns = 0;
  uint32_t lineFeeds = 0;
  for (uint32_t i = 0; i < length; ++i) {
    const unsigned char byte = start[i];
    if (byte == '\n') {
      if (++lineFeeds >= 2)
        return i + 1;
    } else if (byte == '\r') {
      if (++carriageReturns >= 2)
        return (i + 1 < length && start[i + 1] == '\n') ? i + 2 : i + 1;
    } else {
      carriageReturns = 0;
      lineFeeds = 0;
    }
  }
  return length;
}

int CMailMsg::init(const unsigned char *start, uint32_t length, const CString &mailboxPath) {
  const CString *const names[kFieldCount] = {&hdrDate, &hdrTo, &hdrFrom, &hdrSubject, &hdrCc};
  CString *const values[kFieldCount] = {&date, &to, &from, &subject, &cc};

  // The bytes may be a mapping that another process cuts short at any moment: read them in
  // two guarded passes, the first to measure, the second to copy into what was allocated
  // between them, so that a fault never leaves anything half-owned.
  MessageLayout layout{};
  const bool measured = runGuarded([&] {
    layout.checksum = computeChecksum(start, length);
    layout.headerLength = getHeaderLength(start, length);
    for (int field = 0; field < kFieldCount; ++field) {
      FieldSpan &span = layout.fields[field];
      span.index = findField(names[field]->GetString(), start, layout.headerLength);
      span.length = fieldValueLength(span.index, start, layout.headerLength);
    }
  });
  if (!measured)
    return -1;

  checksum = layout.checksum;
  position = 0;
  const uint32_t headerLength = layout.headerLength;
  bodyLength = length - headerLength;

  AGENT_LOG("Searching for subject as: %s", hdrSubject.GetString());
  for (int field = 0; field < kFieldCount; ++field)
    values[field]->bytes().assign(layout.fields[field].length, '\0');
  if (bodyLength == 0) {
    body.reset();
  } else {
    body.reset(static_cast<unsigned char *>(std::malloc(size_t{bodyLength} + 1)));
    if (!body)
      return -1;
  }

  const bool copied = runGuarded([&] {
    for (int field = 0; field < kFieldCount; ++field) {
      const FieldSpan &span = layout.fields[field];
      if (span.length != 0)
        std::memcpy(&values[field]->bytes()[0], start + span.index, span.length);
    }
    if (bodyLength != 0) {
      std::memcpy(body.get(), start + headerLength, bodyLength);
      body.get()[bodyLength] = 0;
    }
  });
  if (!copied)
    return -1;
  AGENT_LOG("Subject: %s\n", subject.GetString());

  mailbox = mailboxPath;
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
