// SqliteConnection and Statement.
#include "host/Sqlite.h"

std::unique_ptr<SqliteConnection> SqliteConnection::open(const std::string &path, int flags,
                                                         int &status, std::string &error) {
  // Without the library's count of the memory it holds, which takes a lock shared by all its
  // connections on every allocation: a search scores on two threads. Before the first
  // connection only; later it is refused, harmlessly.
  static const int withoutMemoryStatus = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
  (void)withoutMemoryStatus;
  sqlite3 *db = nullptr;
  status = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
  if (status != SQLITE_OK) {
    error = db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(status);
    sqlite3_close_v2(db);
    return nullptr;
  }
  sqlite3_extended_result_codes(db, 1);
  return std::unique_ptr<SqliteConnection>(new SqliteConnection(db));
}

SqliteConnection::~SqliteConnection() {
  sqlite3_close_v2(db_);
}

bool SqliteConnection::exec(const std::string &sql) {
  const int status = sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr);
  if (status != SQLITE_OK) {
    noteError(status);
    return false;
  }
  return true;
}

void SqliteConnection::noteError(int status) {
  if (status_ != SQLITE_OK)
    return;
  status_ = status;
  message_ = sqlite3_errmsg(db_);
  if (message_.empty() || message_ == "not an error")
    message_ = sqlite3_errstr(status);
}

void SqliteConnection::clearError() {
  status_ = SQLITE_OK;
  message_.clear();
}

Statement::Statement(SqliteConnection &connection, const char *sql) : connection_(connection) {
  const int status = sqlite3_prepare_v3(connection_.handle(), sql, -1, SQLITE_PREPARE_PERSISTENT,
                                        &statement_, nullptr);
  if (status != SQLITE_OK) {
    connection_.noteError(status);
    sqlite3_finalize(statement_);
    statement_ = nullptr;
  }
}

Statement::~Statement() {
  sqlite3_finalize(statement_);
}

Statement &Statement::bind(int index, int64_t value) {
  if (statement_ != nullptr)
    sqlite3_bind_int64(statement_, index, value);
  return *this;
}

Statement &Statement::bind(int index, const std::string &value) {
  if (statement_ != nullptr)
    sqlite3_bind_text64(statement_, index, value.data(), value.size(), SQLITE_TRANSIENT,
                        SQLITE_UTF8);
  return *this;
}

Statement &Statement::bindNull(int index) {
  if (statement_ != nullptr)
    sqlite3_bind_null(statement_, index);
  return *this;
}

Statement &Statement::bindStatic(int index, const char *text, size_t size) {
  if (statement_ != nullptr)
    sqlite3_bind_text64(statement_, index, text, size, SQLITE_STATIC, SQLITE_UTF8);
  return *this;
}

Statement &Statement::bindBlob(int index, const void *bytes, size_t size) {
  if (statement_ != nullptr)
    sqlite3_bind_blob64(statement_, index, bytes, size, SQLITE_TRANSIENT);
  return *this;
}

bool Statement::step() {
  if (statement_ == nullptr)
    return false;
  const int status = sqlite3_step(statement_);
  if (status == SQLITE_ROW)
    return true;
  if (status != SQLITE_DONE)
    connection_.noteError(status);
  return false;
}

bool Statement::run() {
  if (statement_ == nullptr)
    return false;
  const int status = sqlite3_step(statement_);
  const bool done = status == SQLITE_DONE || status == SQLITE_ROW;
  if (!done)
    connection_.noteError(status);
  reset();
  return done;
}

void Statement::reset() {
  if (statement_ == nullptr)
    return;
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

int64_t Statement::integer(int column) const {
  return statement_ != nullptr ? sqlite3_column_int64(statement_, column) : 0;
}

double Statement::real(int column) const {
  return statement_ != nullptr ? sqlite3_column_double(statement_, column) : 0.0;
}

std::string Statement::text(int column) const {
  if (statement_ == nullptr)
    return std::string();
  const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(statement_, column));
  const int size = sqlite3_column_bytes(statement_, column);
  return bytes != nullptr ? std::string(bytes, static_cast<size_t>(size)) : std::string();
}

std::string Statement::blob(int column) const {
  if (statement_ == nullptr)
    return std::string();
  const auto *bytes = static_cast<const char *>(sqlite3_column_blob(statement_, column));
  const int size = sqlite3_column_bytes(statement_, column);
  return bytes != nullptr ? std::string(bytes, static_cast<size_t>(size)) : std::string();
}

bool Statement::isNull(int column) const {
  return statement_ == nullptr || sqlite3_column_type(statement_, column) == SQLITE_NULL;
}
