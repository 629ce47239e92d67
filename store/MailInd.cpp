// CMailIndex: the mailbox list and the one open mail file of a walk.
#include "store/MailInd.h"

#include "cmn/Registry.h"
#include "include/tuk/AgentLog.h"
#include "store/MailMsg.h"

AGENT_LOG_SOURCE(".\\MailInd");

CMailIndex::~CMailIndex() {
  if (filenames) {
    AGENT_LOG(" and freeing filename list");
    filenames.reset();
  }
  if (mailFile) {
    AGENT_LOG(" and deleting mailfile\n");
    mailFile.reset();
  }
}

int CMailIndex::initList(const CString &key, const CString &valueName, const CString &mailExt,
                         const CString &ctrlExt) {
  CString path;
  // An empty value names no folder: taken as it is, the walk would list the whole file
  // system from its root.
  if (!GetRegValue(key, valueName, path) || path.IsEmpty()) {
    AGENT_LOG("Failed trying to get MailPath value to initList\n");
    return -1;
  }
  AGENT_LOG("MailPath is %s\n", path.GetString());
  filenames = std::make_unique<CMailFilenameList>();
  const int result = filenames->findMailboxes(path, mailExt, ctrlExt);
  if (result < 0)
    filenames.reset();
  return result;
}

int CMailIndex::makeMailFile(const CString &name) {
  mailFile = newMailFile();
  if (mailFile->init(name) < 0) {
    mailFile.reset();
    return -1;
  }
  return 0;
}

std::unique_ptr<CMailMsg> CMailIndex::getNextMsg(uint32_t *offset, uint32_t *length) {
  return mailFile ? mailFile->getNextMsg(offset, length) : nullptr;
}

std::unique_ptr<CMailMsg> CMailIndex::getMsgIn(const CString &name, uint32_t offset,
                                               uint32_t length) {
  return mailFile ? mailFile->getMsgIn(name, offset, length) : nullptr;
}

std::unique_ptr<CString> CMailIndex::currentMailbox() const {
  if (!mailFile)
    return std::make_unique<CString>();
  return mailFile->getFileName();
}
