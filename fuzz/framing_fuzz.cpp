// A client's framing over an arbitrary file: the walk ends, its ranges lie in order inside
// the file without overlapping, each message's checksum is that of its bytes, every range
// reopens with getMsgAt to the same checksum, and a second walk gives the same ranges.
//
// Built once per client; FUZZ_MAIL_FILE names the client's mail file class.
#include "clients/Delimiters.h"
#include "clients/Eudora.h"
#include "clients/InternetMail.h"
#include "clients/NSMFile.h"
#include "clients/Pegasus.h"
#include "fuzz/FuzzSupport.h"
#include "tests/support/Reference.h"
#include <type_traits>
#include <utility>
#include <vector>

namespace {
using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

// The first byte a message of the client may start at.
template <class MailFile>
constexpr uint32_t kFirstOffset =
    std::is_same<MailFile, CPegasusMailFile>::value ? kPegasusFileHeaderSize : 0;

template <class MailFile> Ranges walkFraming(MailFile &file, const uint8_t *data, size_t size) {
  Ranges ranges;
  uint32_t offset = 0, length = 0;
  // Each message but a last empty one holds at least a byte: more than size + 1 is a loop.
  while (auto message = file.getNextMsg(&offset, &length)) {
    FUZZ_CHECK(ranges.size() <= size + 1);
    FUZZ_CHECK(offset >= kFirstOffset<MailFile>);
    FUZZ_CHECK(uint64_t{offset} + length <= size);
    if (!ranges.empty())
      FUZZ_CHECK(offset >= ranges.back().first + ranges.back().second);
    FUZZ_CHECK(message->checksum == referenceChecksum(data + offset, length));
    ranges.emplace_back(offset, length);
  }
  // The end stays the end.
  FUZZ_CHECK(file.getNextMsg(&offset, &length) == nullptr);
  return ranges;
}

template <class MailFile> int checkFraming(const uint8_t *data, size_t size) {
  bringAgentUp();
  if (size > 1u << 20)
    return 0;
  static const std::string path = scratchDir() + "/mailbox";
  FUZZ_CHECK(writeBytes(path, data, size));
  const CString name(path.c_str());
  MailFile file;
  if (file.init(name) != 0) {
    FUZZ_CHECK(size == 0); // only an empty file refuses to map
    return 0;
  }
  const Ranges ranges = walkFraming(file, data, size);
  if (size > kFirstOffset<MailFile>)
    FUZZ_CHECK(!ranges.empty());
  // A record of the walk reopens, as openObject reopens it, in a mail file of its own.
  MailFile reopened;
  FUZZ_CHECK(reopened.init(name) == 0);
  for (const auto &range : ranges) {
    const auto message = reopened.getMsgAt(range.first, range.second);
    FUZZ_CHECK(message != nullptr);
    FUZZ_CHECK(message->checksum == referenceChecksum(data + range.first, range.second));
  }
  FUZZ_CHECK(reopened.getMsgAt(static_cast<uint32_t>(size), 1) == nullptr);
  // Opening the mailbox again restarts the scan from scratch.
  FUZZ_CHECK(file.setMailbox(name) == 0);
  FUZZ_CHECK(walkFraming(file, data, size) == ranges);
  return 0;
}
} // namespace

extern "C" int FUZZ_ENTRY(const uint8_t *data, size_t size) {
  return checkFraming<FUZZ_MAIL_FILE>(data, size);
}
