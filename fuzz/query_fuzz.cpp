// The query language over arbitrary text: every input is a query or an error at a place
// inside it, every query's expression is one the full-text engine reads without an error, and
// its words can be marked in a text.
#include "fuzz/FuzzSupport.h"
#include "host/QueryParser.h"
#include "host/Snippet.h"
#include <sqlite3.h>

#include <string>

namespace {
// An empty table of the index's columns: a MATCH of any readable expression runs on it.
sqlite3 *engine() {
  static sqlite3 *const db = [] {
    sqlite3 *opened = nullptr;
    sqlite3_open(":memory:", &opened);
    sqlite3_exec(opened,
                 "CREATE VIRTUAL TABLE texts USING fts5(body, subject, \"from\", \"to\", cc, "
                 "attachment, content = '', tokenize = 'unicode61 remove_diacritics 2')",
                 nullptr, nullptr, nullptr);
    return opened;
  }();
  return db;
}

bool engineReads(const std::string &expression) {
  sqlite3_stmt *statement = nullptr;
  if (sqlite3_prepare_v2(engine(), "SELECT rowid FROM texts WHERE texts MATCH ?", -1, &statement,
                         nullptr) != SQLITE_OK)
    return false;
  sqlite3_bind_text(statement, 1, expression.c_str(), -1, SQLITE_TRANSIENT);
  const int status = sqlite3_step(statement);
  sqlite3_finalize(statement);
  return status == SQLITE_DONE || status == SQLITE_ROW;
}
} // namespace

extern "C" int FUZZ_ENTRY(const uint8_t *data, size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  ParsedQuery query;
  QueryError error;
  if (!parseQuery(text, 890000000, query, error)) {
    FUZZ_CHECK(error.position <= text.size());
    FUZZ_CHECK(!error.what.empty());
    return 0;
  }
  if (!query.match.empty()) {
    FUZZ_CHECK(engineReads(query.match));
    // Its words marked in the query's own text: a snippet holds the text's words in order.
    const std::string snippet = SnippetMaker(engine(), query.match, "", "").snippet(text, "body");
    FUZZ_CHECK(snippet.size() <= text.size() + 6);
  }
  for (const std::string &missing : query.without)
    FUZZ_CHECK(engineReads(missing));
  FUZZ_CHECK(query.since <= query.until || query.dated);
  return 0;
}
