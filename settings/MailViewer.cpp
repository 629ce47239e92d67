// CMHAgent::RunObject: finds the message a record names and shows it in the View Email
// window, or tells the user to reindex when the mailbox has changed under the record.
#include "agent/Agent.h"

#include "include/tuk/AgentLog.h"
#include "platform/Window.h"
#include "resources/resource.h"
#include "settings/MailDialog.h"
#include "store/MailFile.h"
#include "store/MailMsg.h"

AGENT_LOG_SOURCE(".\\Agent");

namespace {

// The same box for a message that is gone and for one that has changed.
void tellUserToReindex(UINT captionId) {
  CString caption, text;
  caption.LoadString(captionId);
  text.LoadString(IDS_MESSAGE_GONE);
  MessageBoxA(nullptr, text, caption, MB_OK | MB_ICONEXCLAMATION);
}

// Every LF becomes CR LF and nothing else changes: a CR LF becomes CR CR LF.
CString withCrLf(const CString &text) {
  CString converted;
  int start = 0;
  for (int lineFeed = text.Find('\n'); lineFeed >= 0; lineFeed = text.Find('\n', start)) {
    converted += text.Mid(start, lineFeed - start);
    converted += "\r\n";
    start = lineFeed + 1;
  }
  converted += text.Mid(start);
  return converted;
}

} // namespace

int32_t CMHAgent::RunObject(const ObjectRecord *record) {
  AGENT_LOG("RunObject called");
  // Destroyed in reverse: the dialog, then the mail file (which unmaps), then the name.
  CString fileName;
  const std::unique_ptr<CMailFile> mailFile = newMailFile();
  CMailDialog dialog(nullptr);

  fileName = record->path;
  const uint32_t checksum = record->checksum;
  const uint32_t offset = record->offset;
  const uint32_t length = record->length;
  if (mailFile->init(fileName) < 0) {
    AGENT_LOG("Couldn't initialise mailFile\n");
    return StatusOpenFailed;
  }
  std::unique_ptr<CMailMsg> message = mailFile->getMsgAt(offset, length);
  if (!message) {
    AGENT_LOG("Couldn't get message from mailFile.                    Offset: %d, Size: %d\n",
              static_cast<int>(offset), static_cast<int>(length));
    tellUserToReindex(traits_.displayNameId);
    return StatusOk;
  }
  // The message holds its own copies now: the mailbox is closed and unmapped while the user
  // reads, and free for other programs.
  fileName.Empty();
  if (mailFile->init(fileName) < 0) {
    AGENT_LOG("Couldn't initialise mailFile\n");
    return StatusOpenFailed;
  }
  if (!message->verifyChecksum(checksum)) {
    AGENT_LOG("Checksums didn't verify\n");
    message.reset();
    tellUserToReindex(traits_.displayNameId);
    return StatusOk;
  }

  message->getBody(dialog.body);
  message->getCc(dialog.cc);
  message->getDate(dialog.date);
  message->getFrom(dialog.from);
  message->getSubject(dialog.subject);
  message->getTo(dialog.to);
  message->getMailbox(dialog.location);
  if (traits_.crlfBody)
    dialog.body = withCrLf(dialog.body);
  dialog.DoModal(); // whichever way the user closed it, the call has ended well
  return StatusOk;
}
