// The search index: an SQLite database of mhhost's own (marked by its application id), with
// the agents it indexed, their mailboxes, each object's record, times and message ids, and an
// FTS5 table of its decoded text (subject, from, to, cc, body, attachment names) whose rowid
// is the object's id.
//
// A database that is not ours, damaged or locked is never changed: open() fails with a
// message that says so. Every write happens in the caller's transaction.
#pragma once

#include "host/PropertyBlock.h"
#include "host/RecordBuffer.h"
#include "host/Sqlite.h"
#include "host/reader/MailReader.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct StoredMailbox {
  int64_t id = 0;
  std::string path;
  int64_t objectCount = 0;
  // The record with the latest stamp: while keepObject keeps it, the mailbox file has not
  // been written since the last walk, and every object of it stands.
  std::string record;
  int64_t fileState = 0;
};

struct StoredObject {
  int64_t id = 0;
  uint32_t offset = 0, length = 0, checksum = 0;
  uint64_t hash = 0;
  std::string record;
};

struct SearchQuery {
  std::string match;                   // FTS5 query syntax; empty: no word must be found
  std::vector<std::string> without;    // FTS5 expressions that must not match
  std::vector<std::string> folders;    // parts of the mailbox's path, any case
  std::vector<std::string> clientTags; // parts of the agent key
  std::vector<int64_t> ids;
  std::string agentKey; // empty: every agent's objects
  // On the true dates: a message without one is outside any range given.
  bool dated = false;
  int64_t since = std::numeric_limits<int64_t>::min();
  int64_t until = std::numeric_limits<int64_t>::max();
  int64_t limit = 20;
  int64_t offset = 0;
  // Newest and oldest go by the true date, messages without one last; relevance by bm25.
  enum class Order { Newest, Oldest, Relevance } order = Order::Newest;
  std::string markStart, markEnd; // around matched words in the snippet
};

struct SearchHit {
  int64_t id = 0;
  std::string agentKey;
  std::string path;
  uint32_t offset = 0, length = 0;
  int32_t time = 0; // the agent's
  bool hasDate = false;
  int64_t date = 0; // UTC
  std::string from, subject, snippet;
  uint64_t hash = 0; // of the message's bytes when it was indexed
};

// How many hits of a search one store holds from one year (0: messages without a date).
struct HitCount {
  std::string agentKey;
  int year = 0; // local time's
  int64_t count = 0;
};

struct StoreStatus {
  std::string agentKey;
  int64_t messages = 0;
  bool indexed = false;
  int64_t indexedAt = 0; // when a run last finished, seconds since 1970
};

struct IndexedObject {
  int64_t id = 0;
  std::string agentKey;
  std::string record;
};

class IndexDb {
public:
  // Build: a new index, at buildingPath() of the index's path, without a log; publish()
  // puts it in place once whole.
  enum class Access { ReadOnly, ReadWrite, Build };

  // ReadWrite makes the file and its folders when they are missing; ReadOnly wants an index.
  static std::unique_ptr<IndexDb> open(const std::string &path, Access access, std::string &error);
  // Where a new index of `path` is made; a search meanwhile says so.
  static std::string buildingPath(const std::string &path);
  static bool makeFolderOf(const std::string &path, std::string &error);
  // Syncs the new index of `path` (closed) and renames it to `path`.
  static bool publish(const std::string &path, std::string &error);
  static void discardBuild(const std::string &path);
  // A new index, whole, takes the write-ahead log that later runs use.
  bool endBuild();
  IndexDb(const IndexDb &) = delete;
  IndexDb &operator=(const IndexDb &) = delete;
  ~IndexDb();

  // The first error of any call, as a sentence for the person; empty while there is none.
  bool ok() const { return connection_->ok(); }
  std::string errorText() const;

  bool begin();
  bool commit();
  void rollback();

  // ---- indexing (IndexUpdates.cpp)
  std::vector<std::string> agentKeys();
  int64_t agentId(const std::string &agentKey); // made when missing; 0 on an error
  int64_t treeState(int64_t agent);
  void setTreeState(int64_t agent, int64_t state);
  void setIndexedAt(int64_t agent, int64_t seconds);
  std::vector<StoredMailbox> mailboxes(int64_t agent);
  int64_t addMailbox(int64_t agent, const std::string &path);
  void setFileState(int64_t mailbox, int64_t state);
  void removeMailbox(int64_t mailbox);
  std::vector<StoredObject> objects(int64_t mailbox);
  // `message` as read, its text searched as `body`; `raw` when its raw body stands for
  // the text.
  int64_t addObject(int64_t mailbox, const RecordBuffer &record, int32_t agentTime, uint64_t hash,
                    const ReadMessage &message, const std::string &body);
  void replaceRecord(int64_t object, const RecordBuffer &record);
  // The same bytes found at another place, in the same mailbox or another: the object keeps
  // its id and text, and takes the new place's record.
  void moveObject(int64_t object, int64_t mailbox, const RecordBuffer &record);
  // The object goes; its row of the full-text table stays, stale, found by no search.
  void removeObject(int64_t object);

  // ---- making the full-text table anew without its stale rows (IndexUpdates.cpp)
  // Rows of the full-text table whose object is gone.
  int64_t staleTexts();
  int64_t objectCount();
  void beginTextRebuild();
  // Calls `take` with each object of `agentKey`, in the order of ids.
  void eachObject(const std::string &agentKey,
                  const std::function<void(const IndexedObject &)> &take);
  void addRebuiltText(int64_t object, const ReadMessage &message, const std::string &body);
  // An object whose message can no longer be read: it goes, and its mailbox is read again
  // by the next run.
  void forgetObject(int64_t object);
  void finishTextRebuild();

  // ---- searching (IndexQueries.cpp)
  // False with `error` for a query that can't be read, said in the query's words; other
  // errors go to ok()/errorText().
  bool search(const SearchQuery &query, std::vector<SearchHit> &hits, std::string &error);
  // The hits of the ids of `page`, in its order, without their snippets (HitSnippets.h makes
  // them from the messages, read again); an id the index no longer holds is left out.
  bool hitsOf(const std::vector<int64_t> &page, std::vector<SearchHit> &hits, std::string &error);
  // The number of hits of `query`, all of them; -1 with `error` as search() gives it.
  int64_t countHits(const SearchQuery &query, std::string &error);
  // The hits of `query` counted by store and year, in one pass over the matches; empty with
  // `error` as search() gives it.
  std::vector<HitCount> countHitsByStoreAndYear(const SearchQuery &query, std::string &error);
  // Calls `take` with the id of each row of the full-text table that `query`'s words match
  // (any other condition is not looked at), in the order of ids, stale rows too; false with
  // `error` as search() gives it.
  bool eachTextMatch(const SearchQuery &query, std::string &error,
                     const std::function<void(int64_t)> &take);
  // Each agent, then each object in the order of ids with its agent and date, read in one
  // transaction.
  void readObjectFacets(const std::function<void(int64_t, const std::string &)> &agent,
                        const std::function<void(int64_t, int64_t, bool, int64_t)> &object);
  // Moves on whenever another connection commits.
  int64_t dataVersion();
  // Whether a search by relevance scores its matches on two threads (the default), which
  // halves its time when the processors are otherwise idle; when other searches keep them
  // busy, the second thread and its connection only cost.
  void setRankingSplit(bool split) { rankingSplit_ = split; }
  // The connection, whose full-text engine makes snippets.
  sqlite3 *engine() const { return connection_->handle(); }
  bool findObject(int64_t id, IndexedObject &object);
  std::vector<StoreStatus> storeStatus();
  // Whether `id` was ever given to an object (which may be gone since).
  bool wasGiven(int64_t id);

private:
  IndexDb(std::unique_ptr<SqliteConnection> connection, std::string path);
  bool claim(Access access, std::string &error);
  bool createSchema();
  // An index of schema 1 holds raw bodies: its messages are dropped, its agents kept.
  bool rebuildOldSchema();
  void createTexts(const char *name);
  bool insertText(Statement &insert, int64_t object, const ReadMessage &message,
                  const std::string &body);
  Statement &prepared(std::unique_ptr<Statement> &slot, const char *sql);
  void bindQuery(Statement &select, const SearchQuery &query);
  // The ids of a page of hits newest first, without visiting every match (id_runs).
  std::vector<int64_t> newestPage(const SearchQuery &query);
  // The ids of a page of hits by relevance, scored on two threads.
  std::vector<int64_t> relevancePage(const SearchQuery &query);
  // The best offset + limit hits with ids from `firstId` to `lastId`: score (lower is
  // better), id.
  std::vector<std::pair<double, int64_t>> rankedHits(const SearchQuery &query, int64_t firstId,
                                                     int64_t lastId);
  // True when the last query ran; false with `error` when the person's query was unreadable.
  bool queryRead(std::string &error);

  std::unique_ptr<SqliteConnection> connection_;
  std::string path_;
  struct Statements;
  std::unique_ptr<Statements> statements_;
  bool rankingSplit_ = true;

public:
  // Ids come in runs of 1,024: id_runs holds the newest date of each run's messages.
  static constexpr int kIdRunBits = 10;
  // Where a message without a date stands among dates: after every other, newest first.
  static constexpr int64_t kNoDate = std::numeric_limits<int64_t>::min();
  // The score of a hit by relevance, lower for a better one.
  static const char kRelevance[];
};
