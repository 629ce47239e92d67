// CMHAgent's search: the walk by which a host learns the objects of a store: find first, find
// next, close.
#include "agent/Agent.h"

#include "include/tuk/AgentLog.h"
#include "store/LocalTime.h"
#include "store/MailFile.h"
#include "store/MailInd.h"
#include "store/MailMsg.h"

#include <cstring>
#include <utility>

AGENT_LOG_SOURCE(".\\Agent");

namespace {

// A record takes its path and 21 bytes, while `size` reports the path and 18.
constexpr uint32_t kRecordReportedOverhead = 18;
constexpr uint32_t kRecordTrueOverhead = offsetof(ObjectRecord, path) + 1;

// The next message of the walk from the current mailbox on, moving through the list past
// mailboxes that can't be opened or hold nothing. Null when the list is used up.
std::unique_ptr<CMailMsg> searchMessage(OpenSearch &search, uint32_t &offset, uint32_t &length) {
  CMailIndex &index = *search.index;
  for (;;) {
    if (std::unique_ptr<CMailMsg> message = index.getNextMsg(&offset, &length))
      return message;
    const std::unique_ptr<CString> mailbox = index.getNextMailbox();
    if (!mailbox)
      return nullptr;
    search.mailboxStamp = fileStamp(*mailbox);
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

// Runs the message search from the current mailbox and fills the record: the shared second
// half of both find calls.
int32_t findMessage(OpenSearch &search, ObjectRecord *record, int32_t *time, bool &recordTooSmall) {
  uint32_t offset = 0, length = 0;
  recordTooSmall = false;
  const std::unique_ptr<CMailMsg> message = searchMessage(search, offset, length);
  if (!message)
    return StatusNoMoreObjects;
  // The mailbox the message came from is the one the index has open now; its name is read in
  // place, not copied for each record.
  const CString &mailbox = search.index->mailFile->fileName;
  if (!fillRecord(record, mailbox, search.mailboxStamp, *message, offset, length)) {
    recordTooSmall = true;
    return StatusBufferTooSmall;
  }
  if (time)
    *time = messageTime(*message);
  return StatusOk;
}

} // namespace

int32_t CMHAgent::findFirstObjectHandle(uint32_t, AgentHandle *search, ObjectRecord *record,
                                        int32_t *time) {
  CString mailExt, ctrlExt;
  if (getFileExtensions(mailExt, ctrlExt) < 0) {
    AGENT_LOG("Couldn't get file extensions\n");
    return StatusNoExtensions;
  }
  // A walk takes the time zone as it stands when it begins.
  refreshTimeZone();
  OpenSearch opened{newMailIndex()};
  CMailIndex &index = *opened.index;
  mailIndex = nullptr;
  if (index.initList(agentKeyName, mailPathName, mailExt, ctrlExt) < 0) {
    AGENT_LOG("Couldn't initialise MailIndex list\n");
    return StatusNoMoreObjects;
  }
  if (index.isListEmpty()) {
    AGENT_LOG("MailIndex list empty\n");
    return StatusNoMoreObjects;
  }
  std::unique_ptr<CString> mailbox = index.getFirstMailbox();
  for (; mailbox; mailbox = index.getNextMailbox()) {
    opened.mailboxStamp = fileStamp(*mailbox);
    if (index.makeMailFile(*mailbox) >= 0)
      break;
  }
  if (!mailbox) {
    AGENT_LOG("No mailboxes with any content to index.");
    return StatusNoMoreObjects;
  }

  bool recordTooSmall = false;
  const int32_t status = findMessage(opened, record, time, recordTooSmall);
  if (recordTooSmall)
    *search = AGENT_INVALID_HANDLE;
  if (status != StatusOk)
    return status;
  mailIndex = &index;
  *search = searches.open(std::move(opened));
  return StatusOk;
}

int32_t CMHAgent::findNextObjectHandle(AgentHandle search, ObjectRecord *record, int32_t *time) {
  OpenSearch *live = searches.find(search);
  if (!live)
    return StatusNoMoreObjects;
  mailIndex = live->index.get();
  AGENT_LOG("Mailbox: %s\n", mailIndex->currentMailbox()->GetString());
  bool recordTooSmall = false;
  const int32_t status = findMessage(*live, record, time, recordTooSmall);
  if (recordTooSmall) {
    // There is no way to resume: the search ends here.
    searches.close(search);
    mailIndex = nullptr;
  }
  return status;
}

int32_t CMHAgent::closeFindObjectHandle(AgentHandle search) {
  // 0, -1, a handle closed before or one never given out: nothing to delete.
  searches.close(search);
  mailIndex = nullptr;
  return StatusOk;
}
