// Read-only shared mappings of whole files: mapping objects and the views made from them.
#include "Files.h"

#include "FilesFaults.h"
#include "FilesHandles.h"

#include <cerrno>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>

namespace {

// A mapping holds its own descriptor, so that it outlives the file handle it was made from,
// as a Windows mapping does. The size is the file's when the mapping was created, or the
// larger size GetFileSize gave for the file handle: a file that grows later is not seen, one
// that shrinks, before or after, faults past its end (FaultGuard.h).
class MappingObject final : public HandleObject {
public:
  MappingObject(int fd, uint64_t size) : fd(fd), size(size) {}
  UniqueFd fd;
  const uint64_t size;
};

// munmap needs the length that UnmapViewOfFile isn't given, so each view's length is kept
// by its base address.
class ViewLengths {
public:
  void add(const void *base, size_t length) {
    std::lock_guard<std::mutex> lock(mutex_);
    lengths_[base] = length;
  }

  // The length of the view at `base`, forgotten; 0 when there is no view there.
  size_t take(const void *base) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = lengths_.find(base);
    if (found == lengths_.end())
      return 0;
    const size_t length = found->second;
    lengths_.erase(found);
    return length;
  }

private:
  std::mutex mutex_;
  std::map<const void *, size_t> lengths_;
};

// Pages that a view is the first to read from disk come into the cache in 2 MB pieces, and
// the kernel maps such pieces whole. A view of small cached pieces costs a fault per 4 KB page,
// which on a virtual machine makes mapped reading several times slower than read(); once a
// mailbox sits in the cache in large pieces, every later view of it, and every other
// program's, reads near the speed of memory. Only an advice: where huge pages are switched
// off the call fails and nothing changes.
void adviseLargePages(void *base, size_t length) {
#ifdef MADV_HUGEPAGE
  ::madvise(base, length, MADV_HUGEPAGE);
#else
  (void)base;
  (void)length;
#endif
}

ViewLengths &viewLengths() {
  // Never destroyed: a view may still be released by another library's static destructor.
  static ViewLengths *const lengths = new ViewLengths;
  return *lengths;
}

} // namespace

HANDLE CreateFileMappingA(HANDLE fileHandle, SECURITY_ATTRIBUTES * /*security*/, DWORD protect,
                          DWORD maximumSizeHigh, DWORD maximumSizeLow, const char *name) {
  const FileObject *file = handleAs<FileObject>(fileHandle);
  if (file == nullptr) {
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  if (protect != PAGE_READONLY || maximumSizeHigh != 0 || maximumSizeLow != 0 || name != nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  struct stat status;
  if (::fstat(file->fd.get(), &status) != 0) {
    SetLastError(errorFromErrno(errno));
    return nullptr;
  }
  if (status.st_size == 0) {
    SetLastError(ERROR_FILE_INVALID);
    return nullptr;
  }
  UniqueFd fd(::fcntl(file->fd.get(), F_DUPFD_CLOEXEC, 0));
  if (!fd.valid()) {
    SetLastError(errorFromErrno(errno));
    return nullptr;
  }
  // A file cut short since its size was asked is mapped at that size all the same: the pages
  // past its end fault (FaultGuard.h) instead of lying outside the view.
  const auto size = static_cast<uint64_t>(status.st_size);
  auto *mapping = new (std::nothrow)
      MappingObject(fd.get(), size > file->sizeReported ? size : file->sizeReported);
  if (mapping == nullptr) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  fd.release();
  return toHandle(mapping);
}

void *MapViewOfFile(HANDLE mappingHandle, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                    size_t size) {
  const MappingObject *mapping = handleAs<MappingObject>(mappingHandle);
  if (mapping == nullptr) {
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  if (access != FILE_MAP_READ || offsetHigh != 0 || offsetLow != 0 || size > mapping->size) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const uint64_t wanted = size != 0 ? size : mapping->size;
  // On a 32-bit build a whole file of 4 GiB or more can't fit the address space. Its offsets
  // are 32-bit there and only the low part of its size is read (GetFileSize without the high
  // part), so the view holds that low part; at a multiple of 4 GiB nothing is left to map.
  const auto length = static_cast<size_t>(wanted);
  if (length == 0) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  void *base = injectedFailure(FileOperation::MapView)
                   ? MAP_FAILED
                   : ::mmap(nullptr, length, PROT_READ, MAP_SHARED, mapping->fd.get(), 0);
  if (base == MAP_FAILED) {
    SetLastError(errorFromErrno(errno));
    return nullptr;
  }
  adviseLargePages(base, length);
  viewLengths().add(base, length);
  return base;
}

BOOL UnmapViewOfFile(const void *base) {
  const size_t length = base != nullptr ? viewLengths().take(base) : 0;
  if (length == 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  if (::munmap(const_cast<void *>(base), length) != 0) {
    SetLastError(errorFromErrno(errno));
    return FALSE;
  }
  return TRUE;
}
