// RAII over SQLite: a connection that closes itself and keeps the first error of any call
// made through it, and prepared statements that finalise themselves. No call throws; a
// caller checks ok() where an error must stop it.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>

class SqliteConnection {
public:
  // Opens with sqlite3_open_v2's flags. Null with `status` and `error` set on failure.
  static std::unique_ptr<SqliteConnection> open(const std::string &path, int flags, int &status,
                                                std::string &error);
  SqliteConnection(const SqliteConnection &) = delete;
  SqliteConnection &operator=(const SqliteConnection &) = delete;
  ~SqliteConnection();

  sqlite3 *handle() const { return db_; }
  // Runs statements without results; false on an error, which is kept.
  bool exec(const std::string &sql);

  // Keeps the connection's present error unless an earlier one is kept already.
  void noteError(int status);
  bool ok() const { return status_ == SQLITE_OK; }
  int errorStatus() const { return status_; }
  const std::string &errorMessage() const { return message_; }
  void clearError();

private:
  explicit SqliteConnection(sqlite3 *db) : db_(db) {}

  sqlite3 *db_;
  int status_ = SQLITE_OK;
  std::string message_;
};

class Statement {
public:
  // A statement that failed to prepare notes the error and does nothing.
  Statement(SqliteConnection &connection, const char *sql);
  Statement(const Statement &) = delete;
  Statement &operator=(const Statement &) = delete;
  ~Statement();

  Statement &bind(int index, int64_t value);
  Statement &bind(int index, const std::string &value); // copied
  Statement &bindNull(int index);
  // Not copied: the bytes must stay until the statement is reset or stepped to its end.
  Statement &bindStatic(int index, const char *text, size_t size);
  Statement &bindBlob(int index, const void *bytes, size_t size); // copied

  // True while it gives a row; false when it is done or failed (the failure is noted).
  bool step();
  // Runs a statement without rows to its end and resets it; false on an error.
  bool run();
  // Ready for new bindings.
  void reset();

  int64_t integer(int column) const;
  double real(int column) const;
  std::string text(int column) const;
  std::string blob(int column) const;
  bool isNull(int column) const;

private:
  SqliteConnection &connection_;
  sqlite3_stmt *statement_ = nullptr;
};
