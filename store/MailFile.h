// CMailFile: the read-only mapped view of one mailbox, and the framing state that cuts it
// into messages.
//
// Each client derives a class that sets its delimiter in `init`, makes its own message class
// and, where its store needs it, replaces the scan `nextMessage`.
#pragma once

#include "platform/CString.h"
#include "platform/Files.h"
#include "platform/Object.h"
#include "store/DelimiterBuffer.h"

#include <cstdint>
#include <memory>

class CMailMsg;

class CMailFile : public CObject {
public:
  CMailFile() = default;
  ~CMailFile() override = default;
  CMailFile(const CMailFile &) = delete;
  CMailFile &operator=(const CMailFile &) = delete;

  // Sets the client's delimiter and opens `path` (an empty path opens nothing). 0, or -1.
  virtual int init(const CString &path) = 0;

  // The next message of the mailbox with its offset and length, as a walk's record needs it
  // (CMailMsg::initRecord), or null at the end (or when its bytes became unreadable: the
  // framing has moved past it all the same).
  std::unique_ptr<CMailMsg> getNextMsg(uint32_t *offset, uint32_t *length);
  // The message at a known place, or null when the range is not inside the file.
  std::unique_ptr<CMailMsg> getMsgAt(uint32_t offset, uint32_t length);
  // The same in another mailbox, which becomes this object's mailbox.
  std::unique_ptr<CMailMsg> getMsgIn(const CString &name, uint32_t offset, uint32_t length);

  // Frames the next message: 0 with msgOffset/msgLength set, -1 at the end of the file.
  // Called only on an open file, with msgOffset/msgLength describing the previous message.
  virtual int nextMessage();

  // Drops the present mapping and maps `name`; an empty name only drops it. 0, or -1.
  int setMailbox(const CString &name);
  int isOpen() const { return mapBase.get() != nullptr ? 1 : 0; }
  std::unique_ptr<CString> getFileName() const { return std::make_unique<CString>(fileName); }

  ScopedHandle fileHandle;
  CString fileName;
  ScopedHandle mappingHandle;
  ScopedView mapBase;
  uint32_t fileSize = 0;
  uint32_t msgOffset = 0;
  uint32_t msgLength = 0;
  DelimiterBuffer delimiter;
  uint32_t delimiterLength = 0;

protected:
  // Called when the object has mapped another mailbox (or none), for scans that keep state.
  virtual void mailboxChanged() {}
  // The client's message class.
  virtual std::unique_ptr<CMailMsg> newMessage() const = 0;
  // The first steps of every client's init: a fresh delimiter buffer of `capacity` bytes
  // holding `length` bytes of `bytes`. 0, or -1 when it can't be allocated.
  int setDelimiter(const void *bytes, uint32_t length, uint32_t capacity);
  // The generic scan from `msgOffset` on, over the delimiter; the clients' scans share it.
  int scanFrom(uint32_t offset);

private:
  int mapFile(const CString &name);
  void unmapFile();
  std::unique_ptr<CMailMsg> buildMessage(uint32_t offset, uint32_t length);
};

// The file's last-write time in seconds, or 0 when its status can't be had.
int32_t fileStamp(const char *path);
