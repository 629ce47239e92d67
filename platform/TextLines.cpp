// Reading a text file line by line through a descriptor that can't block: a FIFO or a device
// named where a settings file belongs is refused, not waited on.
#include "TextLines.h"

#include "FilesHandles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr size_t kChunk = size_t{64} * 1024;

bool deliver(std::string &line, const std::function<bool(const std::string &)> &visit) {
  if (!line.empty() && line.back() == '\r')
    line.pop_back();
  const bool goOn = visit(line);
  line.clear();
  return goOn;
}

} // namespace

bool forEachLine(const char *path, const std::function<bool(const std::string &line)> &visit) {
  if (path == nullptr)
    return false;
  const UniqueFd file(::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status;
  if (!file.valid() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
    return false;
  std::string line;
  char chunk[kChunk];
  for (;;) {
    const ssize_t got = ::read(file.get(), chunk, sizeof chunk);
    if (got <= 0)
      break;
    for (ssize_t i = 0; i < got; ++i) {
      if (chunk[i] == '\n') {
        if (!deliver(line, visit))
          return true;
      } else if (line.size() < kLongestLine) {
        line += chunk[i];
      }
    }
  }
  if (!line.empty())
    deliver(line, visit);
  return true;
}
