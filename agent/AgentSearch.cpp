// The walk by which a host learns the objects of a store: find first, find next, close.
#include "agent/Agent.h"

#include "agent/Log.h"
#include "store/MailFile.h"
#include "store/MailInd.h"
#include "store/MailMsg.h"

#include <cstring>

AGENT_LOG_SOURCE(".\\Agent");

namespace {

// A record takes its path and 21 bytes, while `size` reports the path and 18.
constexpr uint32_t kRecordReportedOverhead = 18;
constexpr uint32_t kRecordTrueOverhead = offsetof(ObjectRecord, path) + 1;

// The next message of the walk from the current mailbox on, moving through the list past
// mailboxes that can't be opened or hold nothing. Null when the list is used up.
std::unique_ptr<CMailMsg> searchMessage(CMailIndex &index, std::unique_ptr<CString> &mailbox,
                                        uint32_t &offset, uint32_t &length) {
  for (;;) {
    if (std::unique_ptr<CMailMsg> message = index.getNextMsg(&offset, &length))
      return message;
    mailbox = index.getNextMailbox();
    if (!mailbox)
      return nullptr;
    index.setMailbox(*mailbox);  // a mailbox that fails stays closed and gives no message
  }
}

// Fills the record for a message of `mailbox`. The host's capacity is never written past:
// a capacity that covers the reported size but not the record's true size is refused, with
// the true size in `size`, so that a host offering what `size` asks for succeeds next time.
bool fillRecord(ObjectRecord *record, const CString &mailbox, const CMailMsg &message,
                uint32_t offset, uint32_t length) {
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
  record->mailboxStamp = fileStamp(mailbox);
  std::memcpy(record->path, mailbox.GetString(), pathLength + 1);
  return true;
}

} // namespace

int32_t CMHAgent::findMessage(CMailIndex &index, std::unique_ptr<CString> mailbox,
                              ObjectRecord *record, int32_t *time, bool &recordTooSmall) {
  uint32_t offset = 0, length = 0;
  recordTooSmall = false;
  const std::unique_ptr<CMailMsg> message = searchMessage(index, mailbox, offset, length);
  if (!message)
    return StatusNoMoreObjects;
  // The mailbox the message came from is the one the index has open now.
  const std::unique_ptr<CString> current = index.currentMailbox();
  if (!fillRecord(record, *current, *message, offset, length)) {
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
  std::unique_ptr<CString> mailbox = index->getFirstMailbox();
  while (mailbox && index->makeMailFile(*mailbox) < 0)
    mailbox = index->getNextMailbox();
  if (!mailbox) {
    AGENT_LOG("No mailboxes with any content to index.");
    return StatusNoMoreObjects;
  }

  bool recordTooSmall = false;
  const int32_t status = findMessage(*index, std::move(mailbox), record, time, recordTooSmall);
  if (recordTooSmall)
    *search = AGENT_INVALID_HANDLE;
  if (status != StatusOk)
    return status;
  mailIndex = index.release();
  *search = reinterpret_cast<AgentHandle>(mailIndex);
  return StatusOk;
}

int32_t CMHAgent::findNextObjectHandle(AgentHandle search, ObjectRecord *record, int32_t *time) {
  mailIndex = reinterpret_cast<CMailIndex *>(search);
  std::unique_ptr<CString> mailbox = mailIndex->currentMailbox();
  AGENT_LOG("Mailbox: %s\n", mailbox->GetString());
  bool recordTooSmall = false;
  const int32_t status = findMessage(*mailIndex, std::move(mailbox), record, time, recordTooSmall);
  if (recordTooSmall) {
    // There is no way to resume: the search ends here.
    delete mailIndex;
    mailIndex = nullptr;
  }
  return status;
}

int32_t CMHAgent::closeFindObjectHandle(AgentHandle search) {
  if (search != 0 && search != AGENT_INVALID_HANDLE)
    delete reinterpret_cast<CMailIndex *>(search);
  mailIndex = nullptr;
  return StatusOk;
}
