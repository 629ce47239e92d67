// A mailbox file as the host reads it: with pread, never mapped, so that a file cut short
// under the host is a failed read and not a fault. The file last opened stays open: a store's
// messages come mailbox by mailbox.
#pragma once

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <time.h>

// What tells a file written since it was looked at: its size and both its times.
struct FileState {
  off_t size = 0;
  struct timespec modified = {}, changed = {};
  bool operator==(const FileState &other) const;
};

class MailboxFile {
public:
  MailboxFile() = default;
  MailboxFile(const MailboxFile &) = delete;
  MailboxFile &operator=(const MailboxFile &) = delete;
  ~MailboxFile() { close(); }

  bool open(const std::string &path);
  void close();
  bool state(FileState &state) const;
  // False on an error, or when the file is shorter now.
  bool readAt(uint64_t offset, size_t size, std::string &bytes) const;
  // The line that ends with the line feed just ahead of `offset`, without it: Netscape's
  // delimiter line ahead of a message. Empty when there is none.
  void readLineAhead(uint64_t offset, std::string &line) const;

private:
  std::string path_;
  int fd_ = -1;
};

// A strong hash of `line` followed by `range`: the bytes by which a message is known again.
uint64_t hashOfBytes(const std::string &line, const std::string &range);
