// The index's reads: ranked full-text search and an object by its id.
#include "host/IndexDb.h"

#include "host/IndexStatements.h"

bool IndexDb::search(const SearchQuery &query, std::vector<SearchHit> &hits, std::string &error) {
  // Not kept: its snippet marks change from call to call. bm25 weights are the table's rank.
  Statement select(*connection_, R"sql(
    SELECT o.id, a.key, m.path, o.offset, o.length, o.time, texts."from", texts.subject,
           snippet(texts, -1, ?1, ?2, '...', 16), o.date
    FROM texts
      JOIN objects o ON o.id = texts.rowid
      JOIN mailboxes m ON m.id = o.mailbox
      JOIN agents a ON a.id = m.agent
    WHERE texts MATCH ?3 AND (?8 = 0 OR o.date BETWEEN ?4 AND ?5) AND (?6 = '' OR a.key = ?6)
    ORDER BY rank LIMIT ?7)sql");
  select.bind(1, query.markStart)
      .bind(2, query.markEnd)
      .bind(3, query.match)
      .bind(4, query.since)
      .bind(5, query.until)
      .bind(6, query.agentKey)
      .bind(7, query.limit)
      .bind(8, query.dated ? 1 : 0);
  hits.clear();
  while (select.step()) {
    SearchHit hit;
    hit.id = select.integer(0);
    hit.agentKey = select.text(1);
    hit.path = select.text(2);
    hit.offset = static_cast<uint32_t>(select.integer(3));
    hit.length = static_cast<uint32_t>(select.integer(4));
    hit.time = static_cast<int32_t>(select.integer(5));
    hit.from = select.text(6);
    hit.subject = select.text(7);
    hit.snippet = select.text(8);
    hit.hasDate = !select.isNull(9);
    hit.date = select.integer(9);
    hits.push_back(std::move(hit));
  }
  if (connection_->ok())
    return true;
  // FTS5 reports a query it can't read as a plain SQLITE_ERROR: the person's mistake, not
  // the database's.
  if (connection_->errorStatus() == SQLITE_ERROR) {
    error = connection_->errorMessage();
    connection_->clearError();
    return false;
  }
  return true;
}

bool IndexDb::findObject(int64_t id, IndexedObject &object) {
  Statement &select = prepared(statements_->findObject, R"sql(
    SELECT o.id, a.key, o.record FROM objects o
      JOIN mailboxes m ON m.id = o.mailbox JOIN agents a ON a.id = m.agent
    WHERE o.id = ?)sql");
  if (!select.bind(1, id).step())
    return false;
  object.id = select.integer(0);
  object.agentKey = select.text(1);
  object.record = select.blob(2);
  return true;
}
