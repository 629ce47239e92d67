// The index's reads: ranked full-text search and an object by its id.
#include "host/IndexDb.h"

#include "host/IndexStatements.h"

#include <algorithm>
#include <thread>

namespace {

// FROM and WHERE of a search: the words through the full-text table where there are any,
// then every condition, its values bound from ?10 on.
std::string matching(const SearchQuery &query, bool withPlaces = false) {
  // The mailbox and the agent of each match are looked up only when a condition needs them.
  const bool places =
      withPlaces || !query.agentKey.empty() || !query.folders.empty() || !query.clientTags.empty();
  std::string sql =
      query.match.empty() ? " FROM objects o" : " FROM texts JOIN objects o ON o.id = texts.rowid";
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

// The words of `query` without its exclusions, as one full-text expression.
std::string wordsWithout(const SearchQuery &query) {
  std::string match = "(" + query.match + ")";
  for (const std::string &missing : query.without)
    match += " NOT (" + missing + ")";
  return match;
}

// The order of a search that goes through no page of its own: oldest first, or any without
// words (by date then).
const char *orderOf(const SearchQuery &query) {
  return query.order == SearchQuery::Order::Oldest
             ? " ORDER BY o.date IS NULL, o.date, o.id"
             : " ORDER BY o.date IS NULL, o.date DESC, o.id DESC";
}

} // namespace

const int64_t IndexDb::kNoDate;

// A subject match weighs four times a body's, a sender's twice. The weights written out:
// through the table's configured rank, the same bm25 takes half as long again.
const char IndexDb::kRelevance[] = "bm25(texts, 1.0, 4.0, 2.0, 1.0, 1.0, 1.0)";

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

std::vector<std::pair<double, int64_t>> IndexDb::rankedHits(const SearchQuery &query,
                                                            int64_t firstId, int64_t lastId) {
  const size_t wanted = static_cast<size_t>(query.offset + query.limit);
  std::vector<std::pair<double, int64_t>> hits;
  const bool conditions = !query.agentKey.empty() || !query.folders.empty() ||
                          !query.clientTags.empty() || !query.ids.empty() || query.dated;
  if (conditions) {
    const std::string sql = "SELECT " + std::string(kRelevance) + ", o.id" + matching(query) +
                            " AND texts.rowid BETWEEN ?1 AND ?2 ORDER BY 1, 2 LIMIT ?7";
    Statement select(*connection_, sql.c_str());
    bindQuery(select, query);
    select.bind(1, firstId).bind(2, lastId).bind(7, static_cast<int64_t>(wanted));
    while (select.step())
      hits.emplace_back(select.real(0), select.integer(1));
    return hits;
  }
  // Words alone: the full-text table ranks its rows without a look at the objects, which
  // takes longer than the ranking; only the best are looked up, to pass over the rows of
  // removed messages, more of them while too many were such.
  const std::string match = wordsWithout(query);
  Statement select(*connection_, ("SELECT " + std::string(kRelevance) +
                                  ", rowid FROM texts WHERE texts MATCH ?1 AND rowid "
                                  "BETWEEN ?2 AND ?3 ORDER BY 1, 2 LIMIT ?4")
                                     .c_str());
  Statement exists(*connection_, "SELECT 1 FROM objects WHERE id = ?");
  for (size_t taken = wanted + wanted / 4 + 8;; taken *= 4) {
    hits.clear();
    select.reset();
    select.bind(1, match).bind(2, firstId).bind(3, lastId).bind(4, static_cast<int64_t>(taken));
    size_t rows = 0;
    while (select.step() && hits.size() < wanted) {
      ++rows;
      exists.reset();
      if (exists.bind(1, select.integer(1)).step())
        hits.emplace_back(select.real(0), select.integer(1));
    }
    if (hits.size() >= wanted || rows < taken || !connection_->ok())
      return hits;
  }
}

std::vector<int64_t> IndexDb::relevancePage(const SearchQuery &query) {
  // bm25 scores every match: unless told not to, the ids are halved, the upper half scored on
  // a thread with a connection of its own. Both read the same table, so the scores are the
  // ones a single pass gives (the weights of words come from the whole table).
  int64_t lastId = 0;
  {
    Statement select(*connection_, "SELECT max(id) FROM objects");
    lastId = select.step() ? select.integer(0) : 0;
  }
  const int64_t middle = rankingSplit_ ? lastId / 2 : lastId;
  std::vector<std::pair<double, int64_t>> upper;
  std::thread other;
  if (rankingSplit_)
    other = std::thread([&] {
      std::string ignored;
      const std::unique_ptr<IndexDb> db = IndexDb::open(path_, Access::ReadOnly, ignored);
      if (db)
        upper = db->rankedHits(query, middle + 1, lastId);
    });
  std::vector<std::pair<double, int64_t>> hits = rankedHits(query, 0, middle);
  if (other.joinable())
    other.join();
  hits.insert(hits.end(), upper.begin(), upper.end());
  std::sort(hits.begin(), hits.end());
  std::vector<int64_t> page;
  for (size_t i = static_cast<size_t>(query.offset);
       i < hits.size() && page.size() < static_cast<size_t>(query.limit); ++i)
    page.push_back(hits[i].second);
  return page;
}

bool IndexDb::search(const SearchQuery &query, std::vector<SearchHit> &hits, std::string &error) {
  hits.clear();
  // First the page of ids, in order: a sort by date visits every match, and must not take a
  // snippet, which reads a message's whole text, of each.
  std::vector<int64_t> page;
  if (!query.match.empty() && query.order != SearchQuery::Order::Oldest) {
    page = query.order == SearchQuery::Order::Newest ? newestPage(query) : relevancePage(query);
  } else {
    const std::string sql =
        "SELECT o.id" + matching(query) + orderOf(query) + " LIMIT ?7 OFFSET ?9";
    Statement select(*connection_, sql.c_str());
    bindQuery(select, query);
    while (select.step())
      page.push_back(select.integer(0));
  }
  return queryRead(error) && hitsOf(page, hits, error);
}

bool IndexDb::hitsOf(const std::vector<int64_t> &page, std::vector<SearchHit> &hits,
                     std::string &error) {
  hits.clear();
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

std::vector<HitCount> IndexDb::countHitsByStoreAndYear(const SearchQuery &query,
                                                       std::string &error) {
  const std::string sql =
      "SELECT a.key, CASE WHEN o.date IS NULL THEN 0 ELSE CAST(strftime('%Y', o.date, "
      "'unixepoch', 'localtime') AS INTEGER) END, count(*)" +
      matching(query, true) + " GROUP BY 1, 2";
  Statement select(*connection_, sql.c_str());
  bindQuery(select, query);
  std::vector<HitCount> counts;
  while (select.step())
    counts.push_back({select.text(0), static_cast<int>(select.integer(1)), select.integer(2)});
  if (!queryRead(error))
    counts.clear();
  return counts;
}

bool IndexDb::eachTextMatch(const SearchQuery &query, std::string &error,
                            const std::function<void(int64_t)> &take) {
  Statement select(*connection_, "SELECT rowid FROM texts WHERE texts MATCH ? ORDER BY rowid");
  select.bind(1, wordsWithout(query));
  while (select.step())
    take(select.integer(0));
  return queryRead(error);
}

void IndexDb::readObjectFacets(const std::function<void(int64_t, const std::string &)> &agent,
                               const std::function<void(int64_t, int64_t, bool, int64_t)> &object) {
  connection_->exec("BEGIN");
  {
    Statement agents(*connection_, "SELECT id, key FROM agents");
    while (agents.step())
      agent(agents.integer(0), agents.text(1));
    Statement objects(*connection_, "SELECT o.id, m.agent, o.date FROM objects o "
                                    "JOIN mailboxes m ON m.id = o.mailbox ORDER BY o.id");
    while (objects.step())
      object(objects.integer(0), objects.integer(1), !objects.isNull(2), objects.integer(2));
  }
  connection_->exec("COMMIT");
}

int64_t IndexDb::dataVersion() {
  Statement select(*connection_, "PRAGMA data_version");
  return select.step() ? select.integer(0) : 0;
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
