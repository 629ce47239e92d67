// ObjectMailbox: the mailbox that the last openObject mapped, kept for the next. A host opens
// the objects of a mailbox one after the other, and mapping the whole mailbox again for each
// one costs far more than the message.
#pragma once

#include "platform/CString.h"
#include "platform/Files.h"

#include <memory>

class CMailFile;

class ObjectMailbox {
public:
  ObjectMailbox();
  ~ObjectMailbox();
  ObjectMailbox(const ObjectMailbox &) = delete;
  ObjectMailbox &operator=(const ObjectMailbox &) = delete;

  // The kept mail file when it maps `path` and the file there is still the one it mapped, at
  // the size mapped: its view then shows the file's bytes as they are now. Null otherwise.
  CMailFile *reusable(const CString &path) const;
  // Keeps `mailFile`, which has just mapped its mailbox, in place of the one kept before.
  CMailFile &keep(std::unique_ptr<CMailFile> mailFile);
  // Unmaps the kept mailbox: one mailbox is mapped at a time.
  void drop();

private:
  std::unique_ptr<CMailFile> mailFile_;
  // What named the mapped file when it was mapped; false when that could not be had, and the
  // mapping is then never taken for the file under its name.
  BY_HANDLE_FILE_INFORMATION mapped_{};
  bool mappedKnown_ = false;
};
