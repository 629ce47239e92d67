// One index run at a time on an index: a lock on a file beside it, held for the whole run.
// A run commits as it goes, so two runs on one index would interleave their work; the second
// waits for the first instead, and says so.
#pragma once

#include <string>

class IndexRunLock {
public:
  // Takes the lock of the index at `databasePath`, waiting while another run holds it. False
  // with `error` when the lock file can't be made.
  bool acquire(const std::string &databasePath, std::string &error);
  ~IndexRunLock();

  IndexRunLock() = default;
  IndexRunLock(const IndexRunLock &) = delete;
  IndexRunLock &operator=(const IndexRunLock &) = delete;

private:
  int fd_ = -1;
};
