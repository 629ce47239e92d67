// ScopedHandle and ScopedView: owners of a file handle and of a view, on every platform.
#include "Files.h"

void ScopedHandle::reset(HANDLE handle) {
  if (valid() && handle != handle_)
    CloseHandle(handle_);
  handle_ = handle;
}

void ScopedView::reset(const void *base) {
  if (base_ != nullptr && base != base_)
    UnmapViewOfFile(base_);
  base_ = static_cast<const unsigned char *>(base);
}
