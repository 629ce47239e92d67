// ObjectMailbox: whether the kept mapping still shows the file under its name.
#include "agent/ObjectMailbox.h"

#include "store/MailFile.h"

#include <utility>

ObjectMailbox::ObjectMailbox() = default;
ObjectMailbox::~ObjectMailbox() = default;

CMailFile *ObjectMailbox::reusable(const CString &path) const {
  if (!mailFile_ || !mailFile_->isOpen() || !mappedKnown_ || path != mailFile_->fileName)
    return nullptr;
  // Writes in place show through the shared view. A file replaced under the name (a client
  // that compacts a mailbox writes a new one) or grown or cut since is another file.
  const ScopedHandle current(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  BY_HANDLE_FILE_INFORMATION now;
  if (!current.valid() || !GetFileInformationByHandle(current.get(), &now))
    return nullptr;
  const bool sameFile = now.dwVolumeSerialNumber == mapped_.dwVolumeSerialNumber &&
                        now.nFileIndexHigh == mapped_.nFileIndexHigh &&
                        now.nFileIndexLow == mapped_.nFileIndexLow && now.nFileSizeHigh == 0 &&
                        now.nFileSizeLow == mailFile_->fileSize;
  return sameFile ? mailFile_.get() : nullptr;
}

CMailFile &ObjectMailbox::keep(std::unique_ptr<CMailFile> mailFile) {
  mailFile_ = std::move(mailFile);
  // The handle the mail file mapped through names the very file its view shows.
  mappedKnown_ = mailFile_->isOpen() &&
                 GetFileInformationByHandle(mailFile_->fileHandle.get(), &mapped_) != FALSE;
  return *mailFile_;
}

void ObjectMailbox::drop() {
  mailFile_.reset();
  mappedKnown_ = false;
}
