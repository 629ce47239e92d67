// The index's reads: ranked full-text search and an object by its id.
#include "host/IndexDb.h"

#include "host/IndexStatements.h"

#include <algorithm>

namespace {

// FROM and WHERE of a search: the words through the full-text table where there are any,
// then every condition, its values bound from ?10 on.
std::string matching(const SearchQuery &query) {
  // The mailbox and the agent of each match are looked up only when a condition needs them.
  const bool places = !query.agentKey.empty() || !query.folders.empty() ||
                      !query.clientTags.empty();
  std::string sql = query.match.empty()
                        ? " FROM objects o"
                        : " FROM texts JOIN objects o ON o.id = texts.rowid";
  if (places)
    sql += " JOIN mailboxes m ON m.id = o.mailbox JOIN agents a ON a.id = m.agent";
  sql += query.match.empty() ? " WHERE 1" : " WHERE texts MATCH ?3";
  sql += " AND (?8 = 0 OR o.date BETWEEN ?4 AND ?5)";
  if (!query.agentKey.empty())
    sql += " AND a.key = ?6";
  int parameter = 10;
  const auto next = [&parameter] { return "?" + std::to_string(parameter++); };
  for (size_t i = 0; i < query.without.size(); ++i)
    sql += " AND o.id NOT IN (SELECT rowid FROM texts WHERE texts MATCH " + next() + ")";
  for (size_t i = 0; i < query.folders.size(); ++i)
    sql += " AND instr(lower(m.path), lower(" + next() + ")) > 0";
  for (size_t i = 0; i < query.clientTags.size(); ++i)
    sql += " AND instr(a.key, " + next() + ") > 0";
  for (const int64_t id : query.ids)
    sql += " AND o.id = " + std::to_string(id);
  return sql;
}

const char *orderOf(const SearchQuery &query) {
  switch (query.match.empty() ? SearchQuery::Order::Newest : query.order) {
  case SearchQuery::Order::Oldest:
    return " ORDER BY o.date IS NULL, o.date, o.id";
  case SearchQuery::Order::Relevance:
    // The weights written out: through the table's configured rank, the same bm25 takes
    // half as long again.
    return " ORDER BY bm25(texts, 1.0, 4.0, 2.0, 1.0, 1.0, 1.0)";
  case SearchQuery::Order::Newest:
    break;
  }
  return " ORDER BY o.date IS NULL, o.date DESC, o.id DESC";
}

} // namespace

const int64_t IndexDb::kNoDate;

void IndexDb::bindQuery(Statement &select, const SearchQuery &query) {
  select.bind(1, query.markStart)
      .bind(2, query.markEnd)
      .bind(3, query.match)
      .bind(4, query.since)
      .bind(5, query.until)
      .bind(6, query.agentKey)
      .bind(7, query.limit)
      .bind(8, query.dated ? 1 : 0)
      .bind(9, query.offset);
  int parameter = 10;
  for (const std::vector<std::string> *texts : {&query.without, &query.folders, &query.clientTags})
    for (const std::string &text : *texts)
      select.bind(parameter++, text);
}

bool IndexDb::queryRead(std::string &error) {
  if (connection_->ok())
    return true;
  // The query language quotes every word, so the engine reads what it is given (the fuzz
  // target query holds it to that); should it still refuse, that is said without its words.
  if (connection_->errorStatus() == SQLITE_ERROR) {
    error = "it is no query mhhost can read";
    connection_->clearError();
    return false;
  }
  return true;
}

std::vector<int64_t> IndexDb::newestPage(const SearchQuery &query) {
  // The runs of ids, newest first by the newest date each holds: those of the latest mail
  // come first, and once the page's last hit is newer than all a run holds, no later run can
  // change the page.
  std::vector<std::pair<int64_t, int64_t>> runs; // run, its newest date
  {
    Statement select(*connection_, "SELECT run, newest FROM id_runs WHERE newest >= ? "
                                   "ORDER BY newest DESC, run DESC");
    select.bind(1, query.dated ? query.since : kNoDate);
    while (select.step())
      runs.emplace_back(select.integer(0), select.integer(1));
  }
  const std::string sql = "SELECT o.id, coalesce(o.date, " + std::to_string(kNoDate) + ")" +
                          matching(query) + " AND texts.rowid BETWEEN ?1 AND ?2";
  Statement select(*connection_, sql.c_str());
  const size_t wanted = static_cast<size_t>(query.offset + query.limit);
  std::vector<std::pair<int64_t, int64_t>> found; // date, id
  const auto newer = [](const std::pair<int64_t, int64_t> &a,
                        const std::pair<int64_t, int64_t> &b) { return a > b; };
  // Each query takes twice as many runs as the last, as far as they adjoin: a common word
  // fills its page from one run, a rare one is found in a dozen queries, not one per run.
  size_t budget = 1;
  for (size_t next = 0; next < runs.size(); budget *= 2) {
    if (found.size() >= wanted && found[wanted - 1].first > runs[next].second)
      break;
    const int64_t last = runs[next].first;
    int64_t first = last;
    for (++next; next < runs.size() && static_cast<size_t>(last - first + 1) < budget &&
                 runs[next].first == first - 1;
         ++next)
      first = runs[next].first;
    select.reset();
    bindQuery(select, query);
    select.bind(1, first << kIdRunBits).bind(2, ((last + 1) << kIdRunBits) - 1);
    while (select.step())
      found.emplace_back(select.integer(1), select.integer(0));
    std::sort(found.begin(), found.end(), newer);
    if (found.size() > wanted)
      found.resize(wanted);
  }
  std::vector<int64_t> page;
  for (size_t i = static_cast<size_t>(query.offset); i < found.size(); ++i)
    page.push_back(found[i].second);
  return page;
}

bool IndexDb::search(const SearchQuery &query, std::vector<SearchHit> &hits, std::string &error) {
  hits.clear();
  // First the page of ids, in order: a sort by date visits every match, and must not take a
  // snippet, which reads a message's whole text, of each.
  std::vector<int64_t> page;
  if (!query.match.empty() && query.order == SearchQuery::Order::Newest) {
    page = newestPage(query);
    if (!queryRead(error))
      return false;
  } else {
    const std::string sql =
        "SELECT o.id" + matching(query) + orderOf(query) + " LIMIT ?7 OFFSET ?9";
    Statement select(*connection_, sql.c_str());
    bindQuery(select, query);
    while (select.step())
      page.push_back(select.integer(0));
    if (!queryRead(error))
      return false;
  }
  // Then each hit of the page; its snippet is made from its message, read again.
  Statement select(*connection_, R"sql(
    SELECT o.id, a.key, m.path, o.offset, o.length, o.time, o.sender, o.subject, o.date, o.hash
    FROM objects o JOIN mailboxes m ON m.id = o.mailbox JOIN agents a ON a.id = m.agent
    WHERE o.id = ?)sql");
  for (const int64_t id : page) {
    select.reset();
    if (!select.bind(1, id).step())
      continue;
    SearchHit hit;
    hit.id = select.integer(0);
    hit.agentKey = select.text(1);
    hit.path = select.text(2);
    hit.offset = static_cast<uint32_t>(select.integer(3));
    hit.length = static_cast<uint32_t>(select.integer(4));
    hit.time = static_cast<int32_t>(select.integer(5));
    hit.from = select.text(6);
    hit.subject = select.text(7);
    hit.hasDate = !select.isNull(8);
    hit.date = select.integer(8);
    hit.hash = static_cast<uint64_t>(select.integer(9));
    hits.push_back(std::move(hit));
  }
  return queryRead(error);
}

int64_t IndexDb::countHits(const SearchQuery &query, std::string &error) {
  const std::string sql = "SELECT count(*)" + matching(query);
  Statement select(*connection_, sql.c_str());
  bindQuery(select, query);
  const int64_t count = select.step() ? select.integer(0) : 0;
  return queryRead(error) ? count : -1;
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

bool IndexDb::wasGiven(int64_t id) {
  Statement select(*connection_, "SELECT seq FROM sqlite_sequence WHERE name = 'objects'");
  return select.step() && id <= select.integer(0);
}

std::vector<StoreStatus> IndexDb::storeStatus() {
  Statement select(*connection_, R"sql(
    SELECT a.key, a.indexed_at,
           (SELECT count(*) FROM objects o JOIN mailboxes m ON m.id = o.mailbox
            WHERE m.agent = a.id)
    FROM agents a ORDER BY a.id)sql");
  std::vector<StoreStatus> stores;
  while (select.step()) {
    StoreStatus store;
    store.agentKey = select.text(0);
    store.indexed = !select.isNull(1);
    store.indexedAt = select.integer(1);
    store.messages = select.integer(2);
    stores.push_back(std::move(store));
  }
  return stores;
}
