// A message built over arbitrary bytes: its checksum, header block, five fields, body copy,
// body stream and property block agree with what a byte-at-a-time reading of the bytes gives.
#include "fuzz/FuzzSupport.h"
#include "store/MailHeaders.h"
#include "store/MailMsg.h"
#include "tests/support/Reference.h"
#include <cstring>
#include <memory>
#include <string>

namespace {
// The value of the first case-blind match of `name` inside the header block: from one byte
// behind the name up to a CR, an LF or the end of the block.
std::string referenceField(const CString &name, const uint8_t *data, uint32_t headerLength) {
  int64_t at = referenceFieldStart(name.GetString(), data, headerLength);
  std::string value;
  while (at >= 0 && at < headerLength && data[at] != '\r' && data[at] != '\n')
    value += static_cast<char>(data[at++]);
  return value;
}
} // namespace

extern "C" int FUZZ_ENTRY(const uint8_t *data, size_t size) {
  bringAgentUp();
  if (size > 1u << 20)
    return 0;
  const uint32_t length = static_cast<uint32_t>(size);
  // An exact copy on the heap: a read one byte past the range is a finding.
  const std::unique_ptr<uint8_t[]> bytes(new uint8_t[size]);
  if (size != 0)
    std::memcpy(bytes.get(), data, size);
  CMailMsg message;
  FUZZ_CHECK(message.init(bytes.get(), length, "/mail/In.mbx") == 0);
  FUZZ_CHECK(message.checksum == referenceChecksum(data, size));
  // Header block and body add up to the range, and the body is the rest of it.
  const uint32_t headerLength = referenceHeaderLength(data, length);
  FUZZ_CHECK(message.bodyLength == length - headerLength);
  FUZZ_CHECK(message.getHeaderLength(bytes.get(), length) == headerLength);
  if (message.bodyLength == 0) {
    FUZZ_CHECK(message.body == nullptr);
  } else {
    FUZZ_CHECK(std::memcmp(message.body.get(), data + headerLength, message.bodyLength) == 0);
    FUZZ_CHECK(message.body.get()[message.bodyLength] == 0);
  }
  // Each field is the value behind the first match of its name inside the header block.
  const struct {
    const CString &name;
    const CString &value;
  } fields[] = {{hdrDate, message.date},
                {hdrTo, message.to},
                {hdrFrom, message.from},
                {hdrSubject, message.subject},
                {hdrCc, message.cc}};
  for (const auto &field : fields)
    FUZZ_CHECK(field.value.bytes() == referenceField(field.name, data, headerLength));
  // The body stream delivers the body once, in pieces, then the end.
  std::string streamed;
  uint8_t piece[61];
  uint32_t got = 0;
  while (message.read(piece, sizeof piece, &got) == 0) {
    FUZZ_CHECK(got > 0 && got <= sizeof piece);
    streamed.append(reinterpret_cast<const char *>(piece), got);
  }
  FUZZ_CHECK(got == 0);
  FUZZ_CHECK(streamed.size() == message.bodyLength);
  uint32_t position = 0;
  message.tell(&position);
  FUZZ_CHECK(position == message.bodyLength);
  if (message.bodyLength != 0) {
    FUZZ_CHECK(message.seek(2, 0) == 0);
    message.tell(&position);
    FUZZ_CHECK(position == message.bodyLength - 1);
  }
  int32_t day, month, year, hour, minute, second;
  message.getDateFields(&day, &month, &year, &hour, &minute, &second);
  // The property block never goes past a buffer cut to a length the input picks.
  const uint32_t capacity = size == 0 ? 0 : data[0] * 3u;
  const std::unique_ptr<uint8_t[]> block(new uint8_t[capacity]);
  uint32_t used = 0, count = 0;
  const int32_t status = message.getProperties(block.get(), capacity, &used, &count);
  FUZZ_CHECK(status == 0 ? used <= capacity && count == 7 : used > capacity);
  return 0;
}
