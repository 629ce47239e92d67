// The pool of a server's read-only connections.
#include "host/IndexReaders.h"

#include <sys/stat.h>

namespace {

// More idle connections than a busy server's threads would only hold memory.
constexpr size_t kIdleKept = 16;

} // namespace

IndexReaders::IndexReaders(std::string path) : path_(std::move(path)) {}

IndexReaders::Lease::Lease(IndexReaders *owner, std::unique_ptr<IndexDb> db, uint64_t generation,
                           uint64_t file)
    : owner_(owner), db_(std::move(db)), generation_(generation), file_(file) {}

IndexReaders::Lease::Lease(Lease &&other) noexcept
    : owner_(other.owner_), db_(std::move(other.db_)), generation_(other.generation_),
      file_(other.file_) {}

IndexReaders::Lease::~Lease() {
  if (db_)
    owner_->giveBack(std::move(db_), file_);
}

void IndexReaders::refresh() {
  struct stat status;
  const FileIdentity now = stat(path_.c_str(), &status) == 0
                               ? FileIdentity{status.st_dev, status.st_ino}
                               : FileIdentity{};
  if (!(now == identity_) || !watch_) {
    identity_ = now;
    idle_.clear();
    std::string ignored;
    watch_ = now.inode != 0 ? IndexDb::open(path_, IndexDb::Access::ReadOnly, ignored) : nullptr;
    dataVersion_ = watch_ ? watch_->dataVersion() : 0;
    ++generation_;
    ++file_;
    return;
  }
  const int64_t version = watch_->dataVersion();
  if (version != dataVersion_ || !watch_->ok()) {
    dataVersion_ = version;
    ++generation_;
    if (!watch_->ok())
      watch_.reset();
  }
}

IndexReaders::Lease IndexReaders::lease(std::string &error) {
  std::unique_ptr<IndexDb> db;
  uint64_t generation = 0, file = 0;
  bool alone = false;
  {
    const std::lock_guard<std::mutex> hold(lock_);
    refresh();
    generation = generation_;
    file = file_;
    alone = leased_++ == 0;
    if (!idle_.empty()) {
      db = std::move(idle_.back());
      idle_.pop_back();
    }
  }
  // Each connection maps the index, and the pages it reads count in the server's resident
  // memory once per connection; they are the page cache's all the same.
  if (!db)
    db = IndexDb::open(path_, IndexDb::Access::ReadOnly, error);
  if (!db) {
    const std::lock_guard<std::mutex> hold(lock_);
    --leased_;
    return Lease(this, nullptr, generation, file);
  }
  db->setRankingSplit(alone);
  return Lease(this, std::move(db), generation, file);
}

void IndexReaders::giveBack(std::unique_ptr<IndexDb> db, uint64_t file) {
  const std::lock_guard<std::mutex> hold(lock_);
  --leased_;
  // One opened before the file was replaced reads the old file still; one left in an error
  // would answer every later request with it.
  if (file == file_ && db->ok() && idle_.size() < kIdleKept)
    idle_.push_back(std::move(db));
}
