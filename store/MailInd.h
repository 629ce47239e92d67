// CMailIndex: the walk over one client's store, mailbox after mailbox and message after
// message. The pointer to it is the host's search handle.
#pragma once

#include "platform/CString.h"
#include "platform/Object.h"
#include "store/MFNList.h"
#include "store/MailFile.h"

#include <cstdint>
#include <memory>

class CMailMsg;

class CMailIndex : public CObject {
public:
  CMailIndex() = default;
  ~CMailIndex() override;
  CMailIndex(const CMailIndex &) = delete;
  CMailIndex &operator=(const CMailIndex &) = delete;

  // Reads the mail directory from the registry value `valueName` under `key` and builds the
  // mailbox list. The number of mailboxes, or -1 (no such value, or the walk failed).
  int initList(const CString &key, const CString &valueName, const CString &mailExt,
               const CString &ctrlExt);
  bool isListEmpty() const { return filenames->IsEmpty(); }
  std::unique_ptr<CString> getFirstMailbox() { return filenames->getFirstMailbox(); }
  std::unique_ptr<CString> getNextMailbox() { return filenames->getNextMailbox(); }

  // Makes a new mail file of the client on mailbox `name`: 0, or -1 when it can't be opened.
  int makeMailFile(const CString &name);
  // Moves the mail file to mailbox `name`: 0, or -1 (the mail file is then closed).
  int setMailbox(const CString &name) { return mailFile->setMailbox(name); }
  std::unique_ptr<CMailMsg> getNextMsg(uint32_t *offset, uint32_t *length);
  std::unique_ptr<CMailMsg> getMsgIn(const CString &name, uint32_t offset, uint32_t length);
  // The name of the mailbox that the mail file has open.
  std::unique_ptr<CString> currentMailbox() const;

  std::unique_ptr<CMailFilenameList> filenames;
  std::unique_ptr<CMailFile> mailFile;

protected:
  virtual std::unique_ptr<CMailFile> newMailFile() const = 0;
};

// A client's index: the mail file class it makes.
template <class MailFile> class CClientMailIndex : public CMailIndex {
protected:
  std::unique_ptr<CMailFile> newMailFile() const override { return std::make_unique<MailFile>(); }
};
