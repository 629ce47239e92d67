// flock on "<index>.lock": released by the system however the run ends, a kill included.
#include "host/IndexRunLock.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

bool IndexRunLock::acquire(const std::string &databasePath, std::string &error) {
  const std::string path = databasePath + ".lock";
  fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd_ < 0) {
    error = "cannot make the lock file " + path + ": " + std::strerror(errno);
    return false;
  }
  if (flock(fd_, LOCK_EX | LOCK_NB) == 0)
    return true;
  std::fprintf(stderr,
               "mhhost: another mhhost index is running on %s; waiting for it to "
               "finish\n",
               databasePath.c_str());
  while (flock(fd_, LOCK_EX) != 0) {
    if (errno != EINTR) {
      error = "cannot lock " + path + ": " + std::strerror(errno);
      return false;
    }
  }
  return true;
}

IndexRunLock::~IndexRunLock() {
  if (fd_ >= 0)
    ::close(fd_);
}
