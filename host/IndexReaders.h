// Read-only connections to one index, kept between a server's requests: opening one reads the
// schema and maps the file again, which took longer than most searches.
//
// A lease also says which generation of the index it reads: the number moves on whenever
// another connection commits (an index run) or the path names another file (a rebuilt index
// is put in place by a rename), so that what a server derives from the index can tell when
// to derive it again.
#pragma once

#include "host/IndexDb.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <vector>

class IndexReaders {
public:
  explicit IndexReaders(std::string path);
  IndexReaders(const IndexReaders &) = delete;
  IndexReaders &operator=(const IndexReaders &) = delete;

  class Lease {
  public:
    Lease(Lease &&other) noexcept;
    Lease &operator=(Lease &&) = delete;
    ~Lease();
    explicit operator bool() const { return db_ != nullptr; }
    IndexDb &operator*() const { return *db_; }
    IndexDb *operator->() const { return db_.get(); }
    uint64_t generation() const { return generation_; }

  private:
    friend class IndexReaders;
    Lease(IndexReaders *owner, std::unique_ptr<IndexDb> db, uint64_t generation, uint64_t file);

    IndexReaders *owner_;
    std::unique_ptr<IndexDb> db_;
    uint64_t generation_, file_;
  };

  // A connection; an empty lease with `error` when the index can't be opened. It ranks by
  // relevance on a second thread only while no other lease is out: beside other searches,
  // that thread would take its processor from them.
  Lease lease(std::string &error);

private:
  struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const FileIdentity &other) const {
      return device == other.device && inode == other.inode;
    }
  };

  // Under lock_: follows the file at path_, dropping what was opened on another one.
  void refresh();
  void giveBack(std::unique_ptr<IndexDb> db, uint64_t file);

  const std::string path_;
  std::mutex lock_;
  FileIdentity identity_;
  // Its own connection, whose data version tells of commits by any other.
  std::unique_ptr<IndexDb> watch_;
  int64_t dataVersion_ = 0;
  uint64_t generation_ = 0;
  uint64_t file_ = 0; // moves on when path_ names another file
  size_t leased_ = 0;
  std::vector<std::unique_ptr<IndexDb>> idle_;
};
