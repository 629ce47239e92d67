// Opening the index: telling our database from a foreign, damaged or locked one, making
// the schema, transactions and the wording of errors.
#include "host/IndexDb.h"

#include "host/IndexStatements.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// "tkmh": the database is mhhost's. user_version is the schema's version.
constexpr int64_t kApplicationId = 0x746B6D68;
constexpr int64_t kSchemaVersion = 3;
constexpr int kBusyTimeoutMs = 3000;
constexpr int64_t kSearchMapping = int64_t(sizeof(void *) >= 8 ? 2047 : 256) << 20;

// The agents stay when an index of an older schema is rebuilt: `mhhost index` then knows
// every store it held.
const char kAgentsSchema[] = R"sql(
CREATE TABLE agents(
  id INTEGER PRIMARY KEY,
  key TEXT NOT NULL UNIQUE,
  tree_state INTEGER NOT NULL DEFAULT 0,
  indexed_at INTEGER
);
)sql";

// `time` is the agent's time of a message; `date` its true time in UTC from the Date header
// or the delimiter line, NULL when it has none. `decoded` is 0 for a message whose MIME
// structure could not be read: its raw body was indexed. `date` stands ahead of the wide
// columns, and objects_dates holds it beside the id: a search sorted by date reads it for
// every match. `hash` is a strong hash of the
// message's bytes, by which it is known again when it moved. An id is never given twice.
// id_runs holds, for each run of 1,024 ids, the newest date of its messages (an upper bound:
// it is not lowered when one goes). A client's mail comes mostly in the order of its dates,
// so the runs of the latest mail hold the newest hits of most searches, and a search newest
// first reads those runs, not every match.
// objects_of_mailbox gives each mailbox's latest record at once: a run with nothing changed
// reads one record per mailbox, not a row per message.
//
// The full-text table keeps no copy of the text (the mail is there to read it again): it
// would more than double the index. Its rows can then only go with the whole table, so the
// row of a removed object stays, found by no search (every search joins `objects`), until
// there are enough such rows to make the table anew. The body comes first: each column but
// the first costs two bytes in every word's entry of every message. Pending words are
// written out at 16 MB, not 1 MB, and segments merged 16 at a time, not 4: a first run of
// 100,000 messages takes a third less. A new index is built without merging at all (a
// million messages leave about 150 segments, which a search reads in a few milliseconds);
// later runs merge a little with each write, and only 256 segments of one level force it.
const char kSchema[] = R"sql(
CREATE TABLE mailboxes(
  id INTEGER PRIMARY KEY,
  agent INTEGER NOT NULL REFERENCES agents(id),
  path TEXT NOT NULL,
  file_state INTEGER NOT NULL DEFAULT 0,
  UNIQUE(agent, path)
);
CREATE TABLE objects(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  mailbox INTEGER NOT NULL REFERENCES mailboxes(id),
  date INTEGER,
  offset INTEGER NOT NULL,
  length INTEGER NOT NULL,
  checksum INTEGER NOT NULL,
  time INTEGER NOT NULL,
  stamp INTEGER NOT NULL,
  record BLOB NOT NULL,
  decoded INTEGER NOT NULL,
  message_id TEXT NOT NULL,
  in_reply_to TEXT NOT NULL,
  refs TEXT NOT NULL,
  hash INTEGER NOT NULL,
  subject TEXT NOT NULL,
  sender TEXT NOT NULL
);
CREATE INDEX objects_of_mailbox ON objects(mailbox, stamp);
CREATE INDEX objects_dates ON objects(id, date);
CREATE TABLE id_runs(run INTEGER PRIMARY KEY, newest INTEGER NOT NULL);
)sql";

// The full-text table, made with the schema and again when its stale rows are dropped.
const char kTextsSchema[] = R"sql(
CREATE VIRTUAL TABLE %s USING fts5(body, subject, "from", "to", cc, attachment, content = '',
                                   tokenize = 'unicode61 remove_diacritics 2');
INSERT INTO %s(%s, rank) VALUES('hashsize', 16777216);
INSERT INTO %s(%s, rank) VALUES('automerge', 16);
INSERT INTO %s(%s, rank) VALUES('crisismerge', 256);
)sql";

// What an index of an older schema holds besides its agents.
const char kOldTables[] = R"sql(
DROP TABLE IF EXISTS texts;
DROP TABLE IF EXISTS id_runs;
DROP TABLE IF EXISTS objects;
DROP TABLE IF EXISTS mailboxes;
UPDATE agents SET tree_state = 0;
)sql";
// Makes the folders above `path`; false with `error` when one can't be made.
bool makeParentFolders(const std::string &path, std::string &error) {
  for (size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    const std::string folder = path.substr(0, slash);
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
      error = "cannot make the folder " + folder + ": " + std::strerror(errno);
      return false;
    }
  }
  return true;
}

int64_t pragmaValue(SqliteConnection &connection, const char *sql) {
  Statement statement(connection, sql);
  return statement.step() ? statement.integer(0) : 0;
}

// How a connection of each kind reads and writes.
std::string connectionSettings(IndexDb::Access access) {
  switch (access) {
  case IndexDb::Access::ReadWrite:
    return "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
           "PRAGMA wal_autocheckpoint = 4096; PRAGMA cache_size = -65536;"
           "PRAGMA temp_store = MEMORY;";
  case IndexDb::Access::Build:
    // A new index is a file of its own until it is whole (buildingPath): nothing to roll
    // back or keep safe from a power cut, so every page is written once, without a log or a
    // sync, and segments are left unmerged.
    return "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
           "PRAGMA cache_size = -65536; PRAGMA temp_store = MEMORY;"
           "INSERT INTO texts(texts, rank) VALUES('automerge', 0)";
  case IndexDb::Access::ReadOnly:
    break;
  }
  // A search reads the pages of its hits' objects all over the file: mapped, without a
  // system call and a copy each.
  return "PRAGMA mmap_size = " + std::to_string(kSearchMapping) + "; PRAGMA temp_store = MEMORY";
}

} // namespace

IndexDb::IndexDb(std::unique_ptr<SqliteConnection> connection, std::string path)
    : connection_(std::move(connection)), path_(std::move(path)), statements_(new Statements) {}

IndexDb::~IndexDb() {
  // Statements go before the connection they belong to.
  statements_.reset();
}

std::string IndexDb::buildingPath(const std::string &path) {
  return path + ".new";
}

bool IndexDb::makeFolderOf(const std::string &path, std::string &error) {
  return makeParentFolders(path, error);
}

bool IndexDb::publish(const std::string &path, std::string &error) {
  const std::string built = buildingPath(path);
  const int fd = ::open(built.c_str(), O_RDONLY | O_CLOEXEC);
  const bool synced = fd >= 0 && fsync(fd) == 0;
  if (fd >= 0)
    ::close(fd);
  if (!synced || std::rename(built.c_str(), path.c_str()) != 0) {
    error = "cannot put the new index " + built + " in place: " + std::strerror(errno);
    return false;
  }
  return true;
}

bool IndexDb::endBuild() {
  // The mode changes only while no statement of the connection is running.
  statements_.reset(new Statements);
  return connection_->exec("INSERT INTO texts(texts, rank) VALUES('automerge', 16);"
                           "PRAGMA journal_mode = WAL");
}

void IndexDb::discardBuild(const std::string &path) {
  std::remove(buildingPath(path).c_str());
}

std::unique_ptr<IndexDb> IndexDb::open(const std::string &path, Access access, std::string &error) {
  struct stat status;
  const bool exists = stat(path.c_str(), &status) == 0;
  if (access == Access::ReadOnly && !exists) {
    error = stat(buildingPath(path).c_str(), &status) == 0
                ? "the index at " + path +
                      " is not made yet: an mhhost index run is making "
                      "it, or was stopped (run mhhost index)"
                : "there is no index at " + path + " yet: run mhhost index first";
    return nullptr;
  }
  if (exists && !S_ISREG(status.st_mode)) {
    error = path + " is no file; give the index's file with --db";
    return nullptr;
  }
  if (!exists && !makeParentFolders(path, error))
    return nullptr;
  if (access == Access::Build && exists) {
    error = "cannot make a new index: " + path + " is there already";
    return nullptr;
  }
  const int flags = access == Access::ReadOnly ? SQLITE_OPEN_READONLY
                                               : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  int openStatus = SQLITE_OK;
  std::string reason;
  std::unique_ptr<SqliteConnection> connection =
      SqliteConnection::open(path, flags, openStatus, reason);
  if (!connection) {
    error = "cannot open the index " + path + ": " + reason;
    return nullptr;
  }
  sqlite3_busy_timeout(connection->handle(), kBusyTimeoutMs);
  std::unique_ptr<IndexDb> db(new IndexDb(std::move(connection), path));
  if (!db->claim(access, error))
    return nullptr;
  return db;
}

bool IndexDb::claim(Access access, std::string &error) {
  // The id and whether there is a schema at all, read in one transaction: another mhhost may
  // be making the schema of a new index just now, and both come with its commit.
  connection_->exec("BEGIN");
  const int64_t applicationId = pragmaValue(*connection_, "PRAGMA application_id");
  const int64_t schemaEntries = pragmaValue(*connection_, "SELECT count(*) FROM sqlite_schema");
  connection_->exec("COMMIT");
  if (!connection_->ok()) {
    error = errorText();
    return false;
  }
  if (applicationId == kApplicationId) {
    const int64_t version = pragmaValue(*connection_, "PRAGMA user_version");
    const bool older = version >= 1 && version < kSchemaVersion;
    if (older && access == Access::ReadOnly) {
      error = "the index " + path_ +
              " was made by an older mhhost: run mhhost index to "
              "rebuild it";
      return false;
    }
    if (older && !rebuildOldSchema()) {
      error = errorText();
      return false;
    }
    if (!older && version != kSchemaVersion) {
      error = path_ + " is an index of another version of mhhost (schema " +
              std::to_string(version) + ", this one reads " + std::to_string(kSchemaVersion) +
              "); it was left as it is";
      return false;
    }
  } else if (applicationId != 0 || schemaEntries != 0) {
    error = path_ + " is a database of another program, not an mhhost index; it was left as "
                    "it is (give another file with --db)";
    return false;
  } else if (access == Access::ReadOnly) {
    error = "the index " + path_ + " is empty: run mhhost index first";
    return false;
  } else if (!createSchema()) {
    error = errorText();
    return false;
  }
  if (!connection_->exec(connectionSettings(access))) {
    error = errorText();
    return false;
  }
  return true;
}

// The write-ahead log: a commit needs no sync (only a checkpoint does), so a run commits
// about once a second at little cost, and a search reads the last commit without waiting for
// the run. A power cut may lose the last commits, never the index's consistency.
bool IndexDb::createSchema() {
  // Pages of 8 KB hold more of a word's entries per page; it takes effect only in a database
  // still empty.
  connection_->exec("PRAGMA page_size = 8192");
  if (!begin())
    return false;
  // Another process may have made the schema since the check.
  const bool stillEmpty = pragmaValue(*connection_, "PRAGMA application_id") == 0 &&
                          pragmaValue(*connection_, "SELECT count(*) FROM sqlite_schema") == 0;
  if (stillEmpty) {
    connection_->exec(kAgentsSchema);
    connection_->exec(kSchema);
    createTexts("texts");
    connection_->exec("PRAGMA application_id = " + std::to_string(kApplicationId) +
                      "; PRAGMA user_version = " + std::to_string(kSchemaVersion));
  }
  if (!ok() || !commit()) {
    rollback();
    return false;
  }
  return stillEmpty || pragmaValue(*connection_, "PRAGMA application_id") == kApplicationId;
}

bool IndexDb::rebuildOldSchema() {
  if (!begin())
    return false;
  // Another process may have rebuilt it since the check.
  const int64_t version = pragmaValue(*connection_, "PRAGMA user_version");
  if (version >= 1 && version < kSchemaVersion) {
    std::fprintf(stderr,
                 "mhhost: the index %s was made by an older mhhost; it is rebuilt "
                 "now, and every message is read again\n",
                 path_.c_str());
    connection_->exec(kOldTables);
    if (pragmaValue(*connection_, "SELECT count(*) FROM pragma_table_info('agents') "
                                  "WHERE name = 'indexed_at'") == 0)
      connection_->exec("ALTER TABLE agents ADD COLUMN indexed_at INTEGER");
    connection_->exec(kSchema);
    createTexts("texts");
    connection_->exec("PRAGMA user_version = " + std::to_string(kSchemaVersion));
  }
  if (!ok() || !commit()) {
    rollback();
    return false;
  }
  return true;
}

void IndexDb::createTexts(const char *name) {
  char sql[sizeof kTextsSchema + 64];
  std::snprintf(sql, sizeof sql, kTextsSchema, name, name, name, name, name, name, name);
  connection_->exec(sql);
}

bool IndexDb::begin() {
  return connection_->exec("BEGIN IMMEDIATE");
}

bool IndexDb::commit() {
  return connection_->exec("COMMIT");
}

void IndexDb::rollback() {
  if (!sqlite3_get_autocommit(connection_->handle()))
    sqlite3_exec(connection_->handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

std::string IndexDb::errorText() const {
  if (connection_->ok())
    return std::string();
  const std::string detail = connection_->errorMessage();
  switch (connection_->errorStatus() & 0xff) {
  case SQLITE_BUSY:
  case SQLITE_LOCKED:
    return "the index " + path_ +
           " is locked by another process (another mhhost?); try "
           "again when it is done";
  case SQLITE_CORRUPT:
    return "the index " + path_ +
           " is damaged; it was left as it is: move it away and run mhhost index to build a "
           "new one";
  case SQLITE_NOTADB:
    return path_ + " is not an mhhost index (not an SQLite database); it was left as it is "
                   "(give another file with --db)";
  case SQLITE_FULL:
    return "the disk of the index " + path_ + " is full; nothing was changed";
  case SQLITE_READONLY:
  case SQLITE_CANTOPEN:
  case SQLITE_PERM:
    return "cannot write the index " + path_ + ": it, or its folder, may not be writable";
  default:
    return "the index " + path_ + ": " + detail;
  }
}

Statement &IndexDb::prepared(std::unique_ptr<Statement> &slot, const char *sql) {
  if (!slot)
    slot.reset(new Statement(*connection_, sql));
  slot->reset();
  return *slot;
}
