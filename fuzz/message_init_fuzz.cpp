// A message built over arbitrary bytes: its checksum, header block, five fields, body copy,
// body stream and property block agree with what a byte-at-a-time reading of the bytes gives.
#include "fuzz/FuzzSupport.h"

#include "store/MailHeaders.h"
#include "store/MailMsg.h"

#include <cstring>
#include <memory>
#include <string>

namespace {

// The header block by its rule: it ends behind the first blank line, counted by CR and LF
// runs that only another byte resets.
uint32_t referenceHeaderLength(const uint8_t *data, uint32_t size) {
  uint32_t carriageReturns = 0, lineFeeds = 0;
  for (uint32_t i = 0; i < size; ++i) {
    if (data[i] == '\n') {
      if (++lineFeeds >= 2)
        return i + 1;
    } else if (data[i] == '\r') {
      if (++carriageReturns >= 2)
        return i + 1 < size && data[i + 1] == '\n' ? i + 2 : i + 1;
    } else {
      carriageReturns = lineFeeds = 0;
    }
  }
  return size;
}

char lower(uint8_t ch) {
  return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch + 32) : static_cast<char>(ch);
}

// The value of the first case-blind match of `name` inside the header block: from one byte
// behind the name up to a CR, an LF or the end of the block.
std::string referenceField(const CString &name, const uint8_t *data, uint32_t headerLength) {
  const size_t n = std::strlen(name.GetString());
  for (size_t at = 0; n != 0 && at + n <= headerLength; ++at) {
    size_t k = 0;
    while (k < n && lower(data[at + k]) == lower(static_cast<uint8_t>(name[static_cast<int>(k)])))
      ++k;
    if (k < n)
      continue;
    std::string value;
    for (size_t i = at + n + 1; i < headerLength && data[i] != '\r' && data[i] != '\n'; ++i)
      value += static_cast<char>(data[i]);
    return value;
  }
  return std::string();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
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
  FUZZ_CHECK(message.initialised == 1);
  FUZZ_CHECK(message.signature == kMessageSignature);
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
