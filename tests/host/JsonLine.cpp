// Flat JSON objects read by SQLite's JSON functions, which refuse what RFC 8259 refuses.
#include "tests/host/JsonLine.h"

#include <sqlite3.h>

#include <memory>

namespace {
using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)>;

// `sql` over `line`, bound as ?1.
Statement prepare(const char *sql, const std::string &line) {
  static sqlite3 *const db = [] {
    sqlite3 *opened = nullptr;
    sqlite3_open(":memory:", &opened);
    return opened;
  }();
  sqlite3_stmt *prepared = nullptr;
  sqlite3_prepare_v2(db, sql, -1, &prepared, nullptr);
  sqlite3_bind_text(prepared, 1, line.data(), static_cast<int>(line.size()), SQLITE_TRANSIENT);
  return Statement(prepared, sqlite3_finalize);
}

std::string textOf(const Statement &row, int column) {
  const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(row.get(), column));
  return text ? std::string(text, sqlite3_column_bytes(row.get(), column)) : std::string();
}
} // namespace

bool parseJsonLine(const std::string &line, JsonObject &object) {
  const Statement shape = prepare("SELECT CASE WHEN json_valid(?1) THEN json_type(?1) END", line);
  if (sqlite3_step(shape.get()) != SQLITE_ROW || textOf(shape, 0) != "object")
    return false;
  const Statement members = prepare("SELECT key, type, value FROM json_each(?1)", line);
  while (sqlite3_step(members.get()) == SQLITE_ROW) {
    const std::string key = textOf(members, 0), type = textOf(members, 1);
    if (type == "text")
      object.strings[key] = textOf(members, 2);
    else if (type == "integer")
      object.numbers[key] = sqlite3_column_int64(members.get(), 2);
    else if (type != "null") // a value that is not there stays out of both maps
      return false;
  }
  return true;
}
