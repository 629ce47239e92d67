// The registry file on disk: whole-file reads, and locked atomic replacement.
#include "cmn/RegistryFile.h"

#include "cmn/UniqueFd.h"
#include "platform/FilesFaults.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cmn {

namespace {

// The registry's opens and writes, which a test can make fail as the system may.
int openFile(const std::string &path, int flags, mode_t mode = 0) {
  return injectedFailure(FileOperation::RegistryOpen) ? -1 : ::open(path.c_str(), flags, mode);
}

ssize_t writeSome(int fd, const char *bytes, size_t count) {
  return injectedFailure(FileOperation::RegistryWrite) ? -1 : ::write(fd, bytes, count);
}

std::string directoryOf(const std::string &path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos)
    return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// mkdir -p of the directory that holds `path`. New directories are private to the user, as
// configuration directories are.
bool makeParentDirectories(const std::string &path) {
  const std::string directory = directoryOf(path);
  for (size_t slash = directory.find('/', 1);; slash = directory.find('/', slash + 1)) {
    const std::string prefix = directory.substr(0, slash);
    if (::mkdir(prefix.c_str(), 0700) != 0 && errno != EEXIST)
      return false;
    if (slash == std::string::npos)
      return true;
  }
}

// The lock is held for as long as the returned descriptor stays open.
UniqueFd lockExclusively(const std::string &lockPath) {
  UniqueFd lock(openFile(lockPath, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!lock)
    return lock;
  while (injectedFailure(FileOperation::RegistryLock) || ::flock(lock.get(), LOCK_EX) != 0) {
    if (errno != EINTR)
      return UniqueFd();
  }
  return lock;
}

bool writeAll(int fd, const std::string &bytes) {
  size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count = writeSome(fd, bytes.data() + written, bytes.size() - written);
    if (count < 0) {
      if (errno == EINTR)
        continue;
      return false;
    }
    written += static_cast<size_t>(count);
  }
  return true;
}

// Removes the temporary file unless it was renamed into place.
class TemporaryFileRemover {
public:
  explicit TemporaryFileRemover(std::string path) : path_(std::move(path)) {}
  TemporaryFileRemover(const TemporaryFileRemover &) = delete;
  TemporaryFileRemover &operator=(const TemporaryFileRemover &) = delete;
  ~TemporaryFileRemover() {
    if (!renamed_)
      ::unlink(path_.c_str());
  }
  void renamed() { renamed_ = true; }

private:
  std::string path_;
  bool renamed_ = false;
};

// Makes the rename itself durable. Some file systems cannot sync a directory; the new file is
// in place all the same, so a failure here does not fail the write.
void syncDirectory(const std::string &directory) {
  UniqueFd handle(openFile(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (handle)
    ::fsync(handle.get());
}

// Only ever called under the writers' lock, so one fixed temporary name serves; a temporary
// file that a killed writer left behind is simply truncated by the next one.
bool replaceFile(const std::string &path, const std::string &bytes) {
  struct stat old;
  const bool known = !injectedFailure(FileOperation::StatPath) && ::stat(path.c_str(), &old) == 0;
  const mode_t mode = known ? (old.st_mode & 07777) : 0600;
  const std::string temporary = path + ".tmp";
  UniqueFd out(openFile(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!out)
    return false;
  TemporaryFileRemover remover(temporary);
  ::fchmod(out.get(), mode); // best effort: the values matter more than the mode
  if (!writeAll(out.get(), bytes) || ::fsync(out.get()) != 0 || !out.close())
    return false;
  if (injectedFailure(FileOperation::RegistryRename) ||
      ::rename(temporary.c_str(), path.c_str()) != 0)
    return false;
  remover.renamed();
  syncDirectory(directoryOf(path));
  return true;
}

} // namespace

bool readRegistryFile(const std::string &path, std::string &bytes) {
  bytes.clear();
  // Non-blocking, so that a FIFO in the file's place is refused instead of waited on.
  UniqueFd in(openFile(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!in)
    return errno == ENOENT;
  struct stat status;
  if (::fstat(in.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      static_cast<unsigned long long>(status.st_size) > kRegistryFileLimit)
    return false;
  bytes.reserve(static_cast<size_t>(status.st_size));
  char chunk[64 * 1024];
  for (;;) {
    const ssize_t count = ::read(in.get(), chunk, sizeof chunk);
    if (count == 0)
      return true;
    if (count < 0 && errno == EINTR)
      continue;
    // The file may grow between fstat and read: the limit holds for what is read, too.
    if (count < 0 || bytes.size() + static_cast<size_t>(count) > kRegistryFileLimit) {
      bytes.clear();
      return false;
    }
    bytes.append(chunk, static_cast<size_t>(count));
  }
}

bool rewriteRegistryFile(const std::string &path, const RegistryEdit &edit) {
  if (path.empty() || !makeParentDirectories(path))
    return false;
  const UniqueFd lock = lockExclusively(path + ".lock");
  if (!lock)
    return false;
  std::string current;
  if (!readRegistryFile(path, current))
    return false;
  const std::optional<std::string> edited = edit(current);
  if (!edited || edited->size() > kRegistryFileLimit)
    return false;
  return replaceFile(path, *edited);
}

} // namespace cmn
