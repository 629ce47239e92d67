// The index run: the mailbox check, the walk, new objects, and the objects that are gone.
#include "host/Indexer.h"

#include "host/MessageLoader.h"
#include "host/StoreWalk.h"
#include "host/WriteQueue.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <tuple>
#include <unordered_map>

namespace {

// What identifies an object within its mailbox: the place and the checksum of its bytes.
struct ObjectKey {
  uint32_t offset, length, checksum;
  bool operator==(const ObjectKey &other) const {
    return offset == other.offset && length == other.length && checksum == other.checksum;
  }
};

struct ObjectKeyHash {
  size_t operator()(const ObjectKey &key) const {
    uint64_t h = key.offset * 0x9E3779B97F4A7C15ull;
    h ^= (key.length + 0x632BE59BD9B4E019ull) * 0xC2B2AE3D27D4EB4Full;
    h ^= key.checksum * 0x165667B19E3779F9ull;
    return static_cast<size_t>(h ^ (h >> 29));
  }
};

// A mailbox that is read in this run: a changed one from the index, or a new one.
struct MailboxWork {
  int64_t id = 0;
  int64_t fileState = 0; // as scanned before the walk
  bool storedLoaded = false;
  std::vector<StoredObject> stored;
  std::unordered_map<ObjectKey, size_t, ObjectKeyHash> storedByKey;
  std::vector<bool> storedSeen;
  // The keys the walk gave, by offset: it gives a mailbox's records in the order of their
  // offsets, so each is appended; only a restart of the walk looks one up. Twelve bytes a
  // message, not a hash set's fifty: a first run of a million messages stays small.
  std::vector<ObjectKey> walked;
  bool walk(const ObjectKey &key) {
    if (walked.empty() || walked.back().offset < key.offset) {
      walked.push_back(key);
      return true;
    }
    const auto at = std::lower_bound(walked.begin(), walked.end(), key,
                                     [](const ObjectKey &a, const ObjectKey &b) {
                                       return std::tie(a.offset, a.length, a.checksum) <
                                              std::tie(b.offset, b.length, b.checksum);
                                     });
    if (at != walked.end() && *at == key)
      return false;
    walked.insert(at, key);
    return true;
  }
  MailboxReport report;
};

// Where a stored object of a changed mailbox may have gone: its length and checksum.
struct SizeAndSum {
  uint32_t length, checksum;
  bool operator==(const SizeAndSum &other) const {
    return length == other.length && checksum == other.checksum;
  }
};

struct SizeAndSumHash {
  size_t operator()(const SizeAndSum &key) const {
    return ObjectKeyHash()(ObjectKey{0, key.length, key.checksum});
  }
};

struct StoredPlace {
  MailboxWork *work;
  size_t index;
};

int64_t scannedState(const StoreTree &tree, const std::string &path) {
  const auto found = tree.fileStates.find(path);
  return found != tree.fileStates.end() ? found->second : fileStateOf(path);
}

constexpr uint64_t kCommitEvery = 25000; // messages
constexpr auto kCommitInterval = std::chrono::seconds(3);
// Messages read ahead of the writes: enough to keep both threads busy, a few MB at most.
constexpr size_t kWritesAhead = 64;

class IndexRun {
public:
  IndexRun(const AgentEntryTable &entries, Framing framing, IndexDb &db, int64_t agent,
           const StoreTree &tree, ProgressBar &progress, IndexSummary &summary)
      : entries_(entries), db_(db), agent_(agent), tree_(tree), progress_(progress),
        summary_(summary), loader_(entries, framing) {}

  void run() {
    checkStoredMailboxes();
    if (works_.empty() && db_.treeState(agent_) == tree_.fingerprint)
      return;
    summary_.walked = true;
    // Every changed mailbox's objects are known before the walk: an object may turn up in
    // another mailbox, renamed or moved, or further on in its own.
    for (const std::unique_ptr<MailboxWork> &work : works_)
      loadStored(*work);
    walkStore();
    writes_.drain();
    if (!db_.ok())
      return;
    dropUnchangedTheWalkLost();
    for (const std::unique_ptr<MailboxWork> &work : works_)
      finishMailbox(*work);
    db_.setTreeState(agent_, tree_.fingerprint);
  }

private:
  // One keepObject per mailbox, and the mailbox file's state: together they say whether a
  // mailbox must be read again. The file's state also catches a write within the second of
  // the last walk, which the stamp can't tell.
  void checkStoredMailboxes() {
    RecordBuffer record;
    for (StoredMailbox &mailbox : db_.mailboxes(agent_)) {
      const int64_t state = scannedState(tree_, mailbox.path);
      const bool kept = mailbox.objectCount > 0 &&
                        record.assign(mailbox.record.data(), mailbox.record.size()) &&
                        entries_.keepObject(record.get(), 0) == 1 && state == mailbox.fileState;
      if (kept) {
        unchanged_.emplace(mailbox.path, KeptMailbox{mailbox.id, mailbox.objectCount, state});
        summary_.unchanged += static_cast<uint64_t>(mailbox.objectCount);
        ++summary_.mailboxesUnchanged;
        continue;
      }
      MailboxWork &work = addWork(mailbox.path);
      work.id = mailbox.id;
      work.fileState = state;
    }
  }

  MailboxWork &addWork(const std::string &path) {
    works_.emplace_back(new MailboxWork);
    works_.back()->report.path = path;
    workByPath_[path] = works_.back().get();
    return *works_.back();
  }

  void walkStore() {
    StoreWalk walk(entries_);
    int32_t time = -1;
    uint64_t bytesWalked = 0;
    while (const ObjectRecord *record = walk.next(time)) {
      if (writeFailed_)
        return;
      bytesWalked += record->length;
      progress_.update(bytesWalked, tree_.totalBytes, addedSoFar_, "new");
      const std::string path = walk.record().path();
      const auto kept = unchanged_.find(path);
      if (kept != unchanged_.end()) {
        kept->second.walked = true;
        continue;
      }
      MailboxWork *work = workFor(path);
      if (work == nullptr)
        return;
      takeRecord(*work, walk.record());
    }
    summary_.walkedObjects = walk.count();
  }

  // A mailbox whose file is as it was can still leave the store: without its control file
  // the agent no longer finds it. Unless a folder could not be read, which hides mailboxes
  // from the walk that are still there, such a mailbox is read as empty, and its objects go.
  void dropUnchangedTheWalkLost() {
    if (!tree_.unreadable.empty())
      return;
    for (const auto &[path, kept] : unchanged_) {
      if (kept.walked)
        continue;
      summary_.unchanged -= static_cast<uint64_t>(kept.objectCount);
      --summary_.mailboxesUnchanged;
      MailboxWork &work = addWork(path);
      work.id = kept.id;
      work.fileState = kept.fileState;
    }
  }

  MailboxWork *workFor(const std::string &path) {
    const auto found = workByPath_.find(path);
    if (found != workByPath_.end())
      return found->second;
    writes_.drain(); // the id is needed now
    const int64_t id = db_.addMailbox(agent_, path);
    if (id == 0)
      return nullptr;
    MailboxWork &work = addWork(path);
    work.id = id;
    work.fileState = scannedState(tree_, path);
    work.storedLoaded = true; // a new mailbox has nothing stored
    return &work;
  }

  void loadStored(MailboxWork &work) {
    work.storedLoaded = true;
    work.stored = db_.objects(work.id);
    work.storedSeen.assign(work.stored.size(), false);
    for (size_t i = 0; i < work.stored.size(); ++i) {
      const StoredObject &object = work.stored[i];
      work.storedByKey.emplace(ObjectKey{object.offset, object.length, object.checksum}, i);
      movable_.emplace(SizeAndSum{object.length, object.checksum}, StoredPlace{&work, i});
    }
  }

  void takeRecord(MailboxWork &work, const RecordBuffer &record) {
    if (!work.storedLoaded)
      loadStored(work);
    const ObjectKey key{record->offset, record->length, record->checksum};
    if (!work.walk(key))
      return; // given twice, after a restart of the walk
    // A stored object with this place or these bytes' length and checksum is confirmed by
    // the hash of the bytes; a message like none stored is read without hashing it twice.
    const auto stored = work.storedByKey.find(key);
    const bool candidate = stored != work.storedByKey.end() ||
                           movable_.count(SizeAndSum{record->length, record->checksum}) != 0;
    RangeHash hash;
    if (!candidate || !loader_.hashOf(record, hash)) {
      addObject(work, record);
      return;
    }
    if (stored != work.storedByKey.end() && !work.storedSeen[stored->second] &&
        hash.matches(work.stored[stored->second].hash)) {
      // The same bytes at the same place: the object stays; its record takes the new stamp.
      work.storedSeen[stored->second] = true;
      const int64_t id = work.stored[stored->second].id;
      write([this, id, record] { db_.replaceRecord(id, record); });
      ++work.report.unchanged;
      return;
    }
    if (!takeMoved(work, record, hash))
      addObject(work, record);
  }

  // The same bytes at another place keep their object, its id and its text: nothing is read.
  bool takeMoved(MailboxWork &work, const RecordBuffer &record, const RangeHash &hash) {
    const auto candidates = movable_.equal_range(SizeAndSum{record->length, record->checksum});
    for (auto candidate = candidates.first; candidate != candidates.second; ++candidate) {
      MailboxWork &from = *candidate->second.work;
      const size_t index = candidate->second.index;
      if (from.storedSeen[index] || !hash.matches(from.stored[index].hash))
        continue;
      from.storedSeen[index] = true;
      const int64_t id = from.stored[index].id, mailbox = work.id;
      write([this, id, mailbox, record] { db_.moveObject(id, mailbox, record); });
      ++work.report.moved;
      return true;
    }
    return false;
  }

  void addObject(MailboxWork &work, const RecordBuffer &record) {
    if (!loader_.load(record, loaded_)) {
      ++work.report.failed;
      return;
    }
    searchedText(loaded_.message);
    // Counted when read: a write that fails stops the run, which then reports its error.
    ++work.report.added;
    work.report.raw += loaded_.message.decoded ? 0 : 1;
    ++addedSoFar_;
    summary_.bytes += record->length;
    const std::shared_ptr<const LoadedMessage> loaded(new LoadedMessage(std::move(loaded_)));
    loaded_ = LoadedMessage();
    const int64_t mailbox = work.id;
    write([this, mailbox, record, loaded] {
      db_.addObject(mailbox, record, loaded->agentTime, loaded->hash, loaded->message,
                    loaded->message.text);
      commitNowAndThen();
    });
  }

  // A write on the queue's thread; the first failure stops the walk.
  void write(std::function<void()> job) {
    writes_.post([this, job = std::move(job)] {
      if (writeFailed_)
        return;
      job();
      if (!db_.ok())
        writeFailed_ = true;
    });
  }

  // A long run commits what it has every three seconds (or 25,000 messages): a search, which
  // never waits for a run, sees its progress, and a run stopped halfway keeps it. Each commit
  // writes the full-text table's pending words as a segment, to be merged later: commits
  // much more often make a first run far slower. What a commit leaves is whole for the next
  // run: a mailbox's file state is written only when it has been read to its end, so a run
  // stopped halfway reads it again and finds what was committed unchanged.
  void commitNowAndThen() {
    const auto now = std::chrono::steady_clock::now();
    if (++sinceCommit_ < kCommitEvery && now - lastCommit_ < kCommitInterval)
      return;
    lastCommit_ = now;
    sinceCommit_ = 0;
    if (db_.commit())
      db_.begin();
  }

  // Stored objects the walk did not give again are gone: an object that still opens is no
  // proof, since the range of a message that has grown since still holds its old bytes.
  void finishMailbox(MailboxWork &work) {
    if (!work.storedLoaded)
      loadStored(work);
    const uint64_t remaining = work.report.added + work.report.unchanged + work.report.moved;
    for (size_t i = 0; i < work.stored.size() && db_.ok(); ++i) {
      if (work.storedSeen[i])
        continue;
      db_.removeObject(work.stored[i].id);
      ++work.report.removed;
    }
    if (remaining == 0)
      db_.removeMailbox(work.id);
    else
      db_.setFileState(work.id, work.fileState);
    summary_.added += work.report.added;
    summary_.unchanged += work.report.unchanged;
    summary_.moved += work.report.moved;
    summary_.removed += work.report.removed;
    summary_.failed += work.report.failed;
    summary_.raw += work.report.raw;
    ++summary_.mailboxesRead;
    summary_.mailboxes.push_back(work.report);
  }

  const AgentEntryTable &entries_;
  IndexDb &db_;
  const int64_t agent_;
  const StoreTree &tree_;
  ProgressBar &progress_;
  IndexSummary &summary_;
  struct KeptMailbox {
    int64_t id, objectCount, fileState;
    bool walked = false;
  };
  std::unordered_map<std::string, KeptMailbox> unchanged_; // by path
  std::vector<std::unique_ptr<MailboxWork>> works_;
  std::unordered_map<std::string, MailboxWork *> workByPath_;
  std::unordered_multimap<SizeAndSum, StoredPlace, SizeAndSumHash> movable_;
  MessageLoader loader_;
  LoadedMessage loaded_;
  uint64_t addedSoFar_ = 0;
  std::atomic<bool> writeFailed_{false};
  // Last: its thread ends, with every write done, before the members its jobs use go.
  WriteQueue writes_{kWritesAhead};
  std::chrono::steady_clock::time_point lastCommit_ = std::chrono::steady_clock::now();
  uint64_t sinceCommit_ = 0;
};

} // namespace

void updateIndex(const AgentEntryTable &entries, Framing framing, IndexDb &db, int64_t agent,
                 const StoreTree &tree, ProgressBar &progress, IndexSummary &summary) {
  IndexRun(entries, framing, db, agent, tree, progress, summary).run();
}
