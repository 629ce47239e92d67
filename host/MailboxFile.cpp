// Reading a mailbox file with pread, and the hash of a message's bytes.
#include "host/MailboxFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

namespace {

// A delimiter line is far shorter; more ahead of a range is not looked at.
constexpr size_t kLongestDelimiterLine = 1024;

} // namespace

bool FileState::operator==(const FileState &other) const {
  return size == other.size && modified.tv_sec == other.modified.tv_sec &&
         modified.tv_nsec == other.modified.tv_nsec && changed.tv_sec == other.changed.tv_sec &&
         changed.tv_nsec == other.changed.tv_nsec;
}

bool MailboxFile::open(const std::string &path) {
  if (fd_ >= 0 && path == path_)
    return true;
  close();
  fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0)
    return false;
  path_ = path;
  return true;
}

void MailboxFile::close() {
  if (fd_ >= 0)
    ::close(fd_);
  fd_ = -1;
  path_.clear();
}

bool MailboxFile::state(FileState &state) const {
  struct stat status;
  if (fd_ < 0 || fstat(fd_, &status) != 0)
    return false;
  state.size = status.st_size;
  state.modified = status.st_mtim;
  state.changed = status.st_ctim;
  return true;
}

bool MailboxFile::readAt(uint64_t offset, size_t size, std::string &bytes) const {
  bytes.resize(size);
  size_t done = 0;
  while (done < size) {
    const ssize_t got = pread(fd_, &bytes[done], size - done, static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR)
      continue;
    if (got <= 0)
      return false;
    done += static_cast<size_t>(got);
  }
  return true;
}

void MailboxFile::readLineAhead(uint64_t offset, std::string &line) const {
  line.clear();
  if (offset == 0)
    return;
  const size_t before = static_cast<size_t>(std::min<uint64_t>(offset, kLongestDelimiterLine));
  if (!readAt(offset - before, before, line) || line.back() != '\n') {
    line.clear();
    return;
  }
  line.pop_back();
  const size_t lineStart = line.rfind('\n');
  line.erase(0, lineStart == std::string::npos ? 0 : lineStart + 1);
}

uint64_t hashOfBytes(const std::string &line, const std::string &range) {
  if (line.empty())
    return XXH3_64bits(range.data(), range.size());
  const std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t *)> state(XXH3_createState(),
                                                                               XXH3_freeState);
  if (!state)
    return 0;
  XXH3_64bits_reset(state.get());
  XXH3_64bits_update(state.get(), line.data(), line.size());
  XXH3_64bits_update(state.get(), range.data(), range.size());
  return XXH3_64bits_digest(state.get());
}
