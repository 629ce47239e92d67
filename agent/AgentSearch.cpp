// The walk by which a host learns the objects of a store: find first, find next, close.
#include "agent/Agent.h"

#include "include/tuk/AgentLog.h"
#include "store/LocalTime.h"
#include "store/MailFile.h"
#include "store/MailInd.h"
#include "store/MailMsg.h"

#include <cstring>
#include <utility>
#include <vector>

AGENT_LOG_SOURCE(".\\Agent");

namespace {

// A record takes its path and 21 bytes, while `size` reports the path and 18.
constexpr uint32_t kRecordReportedOverhead = 18;
constexpr uint32_t kRecordTrueOverhead = offsetof(ObjectRecord, path) + 1;

// The last-write time of the mailbox that each open search walks, taken just before the
// search opened it, so that a walk asks the file system once per mailbox and not once per
// message. A record carries its mailbox's stamp for keepObject: a stamp from before the
// mailbox was read equals the one the record's own moment would give while the mailbox does
// not change, and is older when it changed during the walk, which makes keepObject reread
// what may have changed, never keep it. Entries go with their search.
class MailboxStamps {
public:
  void opening(const CMailIndex *index, const CString &mailbox) {
    const int32_t stamp = fileStamp(mailbox);
    for (auto &entry : entries_) {
      if (entry.first == index) {
        entry.second = stamp;
        return;
      }
    }
    entries_.emplace_back(index, stamp);
  }
  // The stamp of the search's mailbox; the file's own when the search is not known here.
  int32_t of(const CMailIndex *index, const CString &mailbox) const {
    for (const auto &entry : entries_)
      if (entry.first == index)
        return entry.second;
    return fileStamp(mailbox);
  }
  void forget(const CMailIndex *index) {
    for (auto &entry : entries_) {
      if (entry.first == index) {
        entry = entries_.back();
        entries_.pop_back();
        return;
      }
    }
  }

private:
  std::vector<std::pair<const CMailIndex *, int32_t>> entries_;
};

MailboxStamps &mailboxStamps() {
  static MailboxStamps stamps;
  return stamps;
}

// The name of the mailbox that the index has open, without a copy: empty when none is.
const CString &openMailbox(const CMailIndex &index) {
  static const CString none;
  return index.mailFile ? index.mailFile->fileName : none;
}

// The next message of the walk from the current mailbox on, moving through the list past
// mailboxes that can't be opened or hold nothing. Null when the list is used up.
std::unique_ptr<CMailMsg> searchMessage(CMailIndex &index, uint32_t &offset, uint32_t &length) {
  for (;;) {
    if (std::unique_ptr<CMailMsg> message = index.getNextMsg(&offset, &length))
      return message;
    const std::unique_ptr<CString> mailbox = index.getNextMailbox();
    if (!mailbox)
      return nullptr;
    mailboxStamps().opening(&index, *mailbox);
    index.setMailbox(*mailbox); // a mailbox that fails stays closed and gives no message
  }
}

// Fills the record for a message of `mailbox`. The host's capacity is never written past:
// a capacity that covers the reported size but not the record's true size is refused, with
// the true size in `size`, so that a host offering what `size` asks for succeeds next time.
bool fillRecord(ObjectRecord *record, const CString &mailbox, int32_t stamp,
                const CMailMsg &message, uint32_t offset, uint32_t length) {
  const uint32_t pathLength = static_cast<uint32_t>(mailbox.GetLength());
  const uint32_t reported = pathLength + kRecordReportedOverhead;
  const uint32_t capacity = record->size;
  record->size = reported;
  if (reported > capacity)
    return false;
  if (pathLength + kRecordTrueOverhead > capacity) {
    record->size = pathLength + kRecordTrueOverhead;
    return false;
  }
  record->checksum = message.getChecksum();
  record->offset = offset;
  record->length = length;
  record->mailboxStamp = stamp;
  std::memcpy(record->path, mailbox.GetString(), pathLength + 1);
  return true;
}

} // namespace

// `mailbox`, the name the search starts from, is not needed: the search takes the names that
// follow it from the index.
int32_t CMHAgent::findMessage(CMailIndex &index, std::unique_ptr<CString> /*mailbox*/,
                              ObjectRecord *record, int32_t *time, bool &recordTooSmall) {
  uint32_t offset = 0, length = 0;
  recordTooSmall = false;
  const std::unique_ptr<CMailMsg> message = searchMessage(index, offset, length);
  if (!message)
    return StatusNoMoreObjects;
  // The mailbox the message came from is the one the index has open now.
  const CString &current = openMailbox(index);
  if (!fillRecord(record, current, mailboxStamps().of(&index, current), *message, offset, length)) {
    recordTooSmall = true;
    return StatusBufferTooSmall;
  }
  if (time)
    *time = messageTime(*message);
  return StatusOk;
}

int32_t CMHAgent::findFirstObjectHandle(uint32_t, AgentHandle *search, ObjectRecord *record,
                                        int32_t *time) {
  CString mailExt, ctrlExt;
  if (getFileExtensions(mailExt, ctrlExt) < 0) {
    AGENT_LOG("Couldn't get file extensions\n");
    return StatusNoExtensions;
  }
  // A walk takes the time zone as it stands when it begins.
  refreshTimeZone();
  std::unique_ptr<CMailIndex> index = newMailIndex();
  mailIndex = nullptr;
  if (index->initList(agentKeyName, mailPathName, mailExt, ctrlExt) < 0) {
    AGENT_LOG("Couldn't initialise MailIndex list\n");
    return StatusNoMoreObjects;
  }
  if (index->isListEmpty()) {
    AGENT_LOG("MailIndex list empty\n");
    return StatusNoMoreObjects;
  }
  MailboxStamps &stamps = mailboxStamps();
  std::unique_ptr<CString> mailbox = index->getFirstMailbox();
  for (; mailbox; mailbox = index->getNextMailbox()) {
    stamps.opening(index.get(), *mailbox);
    if (index->makeMailFile(*mailbox) >= 0)
      break;
  }
  if (!mailbox) {
    stamps.forget(index.get());
    AGENT_LOG("No mailboxes with any content to index.");
    return StatusNoMoreObjects;
  }

  bool recordTooSmall = false;
  const int32_t status = findMessage(*index, nullptr, record, time, recordTooSmall);
  if (recordTooSmall)
    *search = AGENT_INVALID_HANDLE;
  if (status != StatusOk) {
    stamps.forget(index.get());
    return status;
  }
  mailIndex = index.release();
  *search = reinterpret_cast<AgentHandle>(mailIndex);
  return StatusOk;
}

int32_t CMHAgent::findNextObjectHandle(AgentHandle search, ObjectRecord *record, int32_t *time) {
  mailIndex = reinterpret_cast<CMailIndex *>(search);
  AGENT_LOG("Mailbox: %s\n", openMailbox(*mailIndex).GetString());
  bool recordTooSmall = false;
  const int32_t status = findMessage(*mailIndex, nullptr, record, time, recordTooSmall);
  if (recordTooSmall) {
    // There is no way to resume: the search ends here.
    mailboxStamps().forget(mailIndex);
    delete mailIndex;
    mailIndex = nullptr;
  }
  return status;
}

int32_t CMHAgent::closeFindObjectHandle(AgentHandle search) {
  if (search != 0 && search != AGENT_INVALID_HANDLE) {
    mailboxStamps().forget(reinterpret_cast<CMailIndex *>(search));
    delete reinterpret_cast<CMailIndex *>(search);
  }
  mailIndex = nullptr;
  return StatusOk;
}
