// The agent's object, the header block around it, and the reader.
#include "host/MessageLoader.h"

#include "host/Clients.h"
#include "host/OpenedObject.h"
#include "host/reader/MailDates.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

namespace {

// A delimiter line is far shorter; more ahead of a range is not looked at.
constexpr size_t kLongestDelimiterLine = 1024;

struct FileState {
  off_t size = 0;
  struct timespec modified = {}, changed = {};
  bool operator==(const FileState &other) const {
    return size == other.size && modified.tv_sec == other.modified.tv_sec &&
           modified.tv_nsec == other.modified.tv_nsec && changed.tv_sec == other.changed.tv_sec &&
           changed.tv_nsec == other.changed.tv_nsec;
  }
};

bool stateOf(int fd, FileState &state) {
  struct stat status;
  if (fstat(fd, &status) != 0)
    return false;
  state.size = status.st_size;
  state.modified = status.st_mtim;
  state.changed = status.st_ctim;
  return true;
}

} // namespace

Framing framingOfKey(const std::string &agentKey) {
  const ClientInfo *const client = clientOfKey(agentKey);
  if (client != nullptr && std::strcmp(client->name, "eudora") == 0)
    return Framing::EudoraLine;
  if (client != nullptr && std::strcmp(client->name, "netscape") == 0)
    return Framing::NetscapeLine;
  return Framing::Plain;
}

bool MessageLoader::openFile(const std::string &path) {
  if (fd_ >= 0 && path == path_)
    return true;
  closeFile();
  fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0)
    return false;
  path_ = path;
  return true;
}

void MessageLoader::closeFile() {
  if (fd_ >= 0)
    ::close(fd_);
  fd_ = -1;
  path_.clear();
}

bool MessageLoader::readAt(uint64_t offset, size_t size, std::string &bytes) {
  bytes.resize(size);
  size_t done = 0;
  while (done < size) {
    const ssize_t got = pread(fd_, &bytes[done], size - done, static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR)
      continue;
    if (got <= 0)
      return false; // an error, or the file is shorter now
    done += static_cast<size_t>(got);
  }
  return true;
}

bool MessageLoader::readFrame(const ObjectRecord *record, size_t bodyLength,
                              std::string &headerBlock, std::string &delimiterLine) {
  if (bodyLength > record->length || !readAt(record->offset, record->length, range_))
    return false;
  headerBlock.assign(range_, 0, record->length - bodyLength);
  delimiterLine.clear();
  if (framing_ == Framing::EudoraLine && record->offset > 0) {
    // The range starts behind "From ???@???", on the rest of its line; only what stands
    // ahead of a file's first delimiter starts at 0.
    const size_t lineEnd = headerBlock.find('\n');
    const size_t taken = lineEnd == std::string::npos ? headerBlock.size() : lineEnd + 1;
    delimiterLine = headerBlock.substr(0, taken);
    headerBlock.erase(0, taken);
  } else {
    readLineAhead(record, delimiterLine);
  }
  return true;
}

void MessageLoader::readLineAhead(const ObjectRecord *record, std::string &line) {
  line.clear();
  if (framing_ != Framing::NetscapeLine || record->offset == 0)
    return;
  // The delimiter line ends with the line feed just ahead of the range.
  const size_t before = std::min<size_t>(record->offset, kLongestDelimiterLine);
  if (!readAt(record->offset - before, before, line) || line.back() != '\n') {
    line.clear();
    return;
  }
  line.pop_back();
  const size_t lineStart = line.rfind('\n');
  line.erase(0, lineStart == std::string::npos ? 0 : lineStart + 1);
}

uint64_t MessageLoader::hashWith(const std::string &line) const {
  const std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t *)> state(
      XXH3_createState(), XXH3_freeState);
  if (!state)
    return 0;
  XXH3_64bits_reset(state.get());
  XXH3_64bits_update(state.get(), line.data(), line.size());
  XXH3_64bits_update(state.get(), range_.data(), range_.size());
  return XXH3_64bits_digest(state.get());
}

bool MessageLoader::hashOf(const RecordBuffer &record, RangeHash &hash) {
  if (!openFile(record.path()) || !readAt(record->offset, record->length, range_))
    return false;
  hash.bytes = XXH3_64bits(range_.data(), range_.size());
  std::string line;
  readLineAhead(record.get(), line);
  hash.withLine = line.empty() ? hash.bytes : hashWith(line);
  return true;
}

bool MessageLoader::load(const RecordBuffer &record, LoadedMessage &loaded) {
  loaded.body.clear();
  openStatus_ = 0;
  FileState before, after;
  if (!openFile(record.path()) || !stateOf(fd_, before))
    return false;
  std::string headerBlock, delimiterLine;
  {
    OpenedObject object(entries_, record.get());
    openStatus_ = object.openStatus();
    if (!object.isOpen() || !object.readBody(loaded.body))
      return false;
    loaded.agentTime = object.time();
  }
  if (!readFrame(record.get(), loaded.body.size(), headerBlock, delimiterLine) ||
      !stateOf(fd_, after) || !(before == after))
    return false;
  readMessage(headerBlock, loaded.body, loaded.message);
  ReadMessage &message = loaded.message;
  const bool dateFromLine = !message.hasDate && parseDelimiterDate(delimiterLine, message.date);
  message.hasDate = message.hasDate || dateFromLine;
  // A date taken from Netscape's line ahead of the range makes that line part of the message.
  loaded.hash = dateFromLine && framing_ == Framing::NetscapeLine
                    ? hashWith(delimiterLine)
                    : XXH3_64bits(range_.data(), range_.size());
  return true;
}
