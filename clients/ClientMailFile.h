// CClientMailFile: what the four clients' mail files share: each makes its own message class.
#pragma once

#include "store/MailFile.h"
#include "store/MailMsg.h"

#include <memory>

template <class Message> class CClientMailFile : public CMailFile {
protected:
  std::unique_ptr<CMailMsg> newMessage() const override { return std::make_unique<Message>(); }

  // The contract of every client's init: a fresh delimiter, then the mailbox.
  int initWith(const CString &path, const void *delimiterBytes, uint32_t length,
               uint32_t capacity) {
    if (setDelimiter(delimiterBytes, length, capacity) < 0)
      return -1;
    return setMailbox(path);
  }
};
