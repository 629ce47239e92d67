// The JSON answers of the search page's API.
#include "host/ServeApi.h"

#include "host/AgentRegistry.h"
#include "host/CommandSupport.h"
#include "host/HitSnippets.h"
#include "host/IndexDb.h"
#include "host/JsonText.h"
#include "host/MessageLoader.h"
#include "host/SearchRequest.h"
#include "host/TimeText.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <sys/stat.h>

namespace {

using nlohmann::json;

ApiAnswer failure(int status, const std::string &error) {
  return {status, jsonText({{"error", error}})};
}

json isoDate(bool hasDate, int64_t seconds) {
  if (!hasDate)
    return nullptr;
  const time_t moment = static_cast<time_t>(seconds);
  struct tm parts;
  char text[32];
  if (gmtime_r(&moment, &parts) == nullptr ||
      std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts) == 0)
    return nullptr;
  return text;
}

// The snippet as runs of text, those the query matched marked.
json snippetRuns(const std::string &snippet) {
  json runs = json::array();
  const std::string start = kMarkStart, end = kMarkEnd;
  size_t at = 0;
  while (at < snippet.size()) {
    const size_t open = snippet.find(start, at);
    if (open != at) {
      runs.push_back({{"text", snippet.substr(at, open - at)}, {"hit", false}});
      if (open == std::string::npos)
        break;
    }
    const size_t close = snippet.find(end, open + start.size());
    const size_t stop = close == std::string::npos ? snippet.size() : close;
    runs.push_back(
        {{"text", snippet.substr(open + start.size(), stop - open - start.size())}, {"hit", true}});
    at = close == std::string::npos ? stop : close + end.size();
  }
  return runs;
}

bool readNumber(const ApiParams &params, const char *name, int64_t fallback, int64_t &value) {
  const auto found = params.find(name);
  if (found == params.end() || found->second.empty()) {
    value = fallback;
    return true;
  }
  const std::string &text = found->second;
  if (text.size() > 9 || text.find_first_not_of("0123456789") != text.npos)
    return false;
  value = std::strtoll(text.c_str(), nullptr, 10);
  return true;
}

std::string param(const ApiParams &params, const char *name) {
  const auto found = params.find(name);
  return found == params.end() ? std::string() : found->second;
}

// The facets: the hits counted by store and by year.
json facetsOf(const std::vector<HitCount> &hitCounts) {
  std::map<std::string, int64_t> stores, years;
  for (const HitCount &counted : hitCounts) {
    stores[storeName(counted.agentKey)] += counted.count;
    if (counted.year != 0)
      years[std::to_string(counted.year)] += counted.count;
  }
  const auto counts = [](const std::map<std::string, int64_t> &names) {
    json list = json::array();
    for (const auto &entry : names)
      list.push_back({{"name", entry.first}, {"count", entry.second}});
    return list;
  };
  return {{"stores", counts(stores)}, {"years", counts(years)}};
}

// The store and year of the request; false when the year is none.
bool readFilter(const ApiParams &params, HitFilter &filter) {
  filter.store = param(params, "store");
  const std::string year = param(params, "year");
  if (year.empty())
    return true;
  if (year.size() != 4 || year.find_first_not_of("0123456789") != year.npos)
    return false;
  filter.year = std::atoi(year.c_str());
  return true;
}

// `query` narrowed to the filter's store (of those `counts` name) and year.
SearchQuery narrowed(SearchQuery query, const HitFilter &filter,
                     const std::vector<HitCount> &counts) {
  for (const HitCount &counted : counts)
    if (!filter.store.empty() && filterKeeps(filter, counted.agentKey, counted.year))
      query.agentKey = counted.agentKey;
  if (filter.year != 0) {
    query.dated = true;
    query.since = std::max<int64_t>(query.since, localMoment(filter.year, 1, 1));
    query.until = std::min<int64_t>(query.until, localMoment(filter.year + 1, 1, 1) - 1);
  }
  return query;
}

} // namespace

void ServedIndex::warm() {
  std::string error;
  IndexReaders::Lease db = readers.lease(error);
  if (db)
    hits.warm(db);
}

ApiAnswer searchAnswer(ServedIndex &index, const ApiParams &params) {
  const std::string text = param(params, "q");
  SearchQuery query;
  QueryError problem;
  if (!readSearchQuery(text, query, problem))
    return failure(400, "the query can't be read: " + problem.what);
  const std::string sort = param(params, "sort");
  if (sort == "oldest")
    query.order = SearchQuery::Order::Oldest;
  else if (sort == "relevance")
    query.order = SearchQuery::Order::Relevance;
  else if (!sort.empty() && sort != "newest")
    return failure(400, "sort is newest, oldest or relevance");
  if (!readNumber(params, "offset", 0, query.offset) ||
      !readNumber(params, "limit", 20, query.limit) || query.limit == 0 || query.limit > 1000)
    return failure(400, "offset wants a number of 0 or more, limit one from 1 to 1000");
  HitFilter filter;
  if (!readFilter(params, filter))
    return failure(400, "year wants four digits");
  query.markStart = kMarkStart;
  query.markEnd = kMarkEnd;
  std::string error;
  IndexReaders::Lease db = index.readers.lease(error);
  if (!db)
    return failure(503, error);
  // One pass over the matches counts them for the facets and the total, mostly finds the
  // page too, and tells a query SQLite can't read.
  HitTally tally;
  if (!index.hits.tally(db, query, filter, tally, error))
    return failure(400, "the query can't be read: " + error);
  std::vector<SearchHit> hits;
  if (query.offset < tally.total &&
      (tally.paged ? db->hitsOf(tally.page, hits, error)
                   : db->search(narrowed(query, filter, tally.counts), hits, error)))
    addSnippets(*db, query, hits);
  if (!db->ok())
    return failure(500, db->errorText());
  PlaceNames places;
  json list = json::array();
  for (const SearchHit &hit : hits) {
    const HitPlace place = places.of(hit);
    list.push_back({{"id", std::to_string(hit.id)},
                    {"time", hit.hasDate ? hit.date : hit.time},
                    {"date", isoDate(hit.hasDate, hit.date)},
                    {"from", hit.from},
                    {"subject", hit.subject},
                    {"store", place.store},
                    {"folder", place.folder},
                    {"snippet", snippetRuns(hit.snippet)}});
  }
  return {200, jsonText({{"query", text},
                         {"total", tally.total},
                         {"offset", query.offset},
                         {"limit", query.limit},
                         {"hits", list},
                         {"facets", facetsOf(tally.counts)}})};
}

ApiAnswer messageAnswer(ServedIndex &index, const std::string &idText) {
  SearchQuery query;
  if (!parseObjectId(idText, query.ids.emplace_back()))
    return failure(404, "the index holds no message " + idText);
  const std::string id = std::to_string(query.ids.front());
  std::string error;
  IndexReaders::Lease db = index.readers.lease(error);
  if (!db)
    return failure(503, error);
  std::vector<SearchHit> hits;
  if (!db->search(query, hits, error) || !db->ok())
    return failure(500, db->ok() ? error : db->errorText());
  if (hits.empty())
    return failure(404, db->wasGiven(query.ids.front())
                            ? "message " + id + " is no longer in the store"
                            : "the index holds no message " + id);
  const SearchHit &hit = hits.front();
  MailboxFile file;
  ReadMessage message;
  const StoredRead read =
      readStoredMessage(file, framingOfKey(hit.agentKey),
                        StoredPlace{hit.path, hit.offset, hit.length, hit.hash}, message);
  if (read != StoredRead::Read)
    return failure(404, "message " + id + " can't be read in " + hit.path +
                            ": the mailbox changed since it was indexed; run mhhost index");
  PlaceNames places;
  const HitPlace place = places.of(hit);
  json attachments = json::array();
  for (const MailAttachment &attachment : message.attachments)
    attachments.push_back(
        {{"name", attachment.name}, {"type", attachment.type}, {"size", attachment.size}});
  return {200, jsonText({{"id", id},
                         {"store", place.store},
                         {"folder", place.folder},
                         {"headers",
                          {{"from", message.from},
                           {"to", message.to},
                           {"cc", message.cc},
                           {"date", isoDate(message.hasDate, message.date)},
                           {"subject", message.subject}}},
                         {"text", message.text},
                         {"attachments", attachments}})};
}

ApiAnswer storesAnswer(ServedIndex &index) {
  std::vector<StoreStatus> stores;
  struct stat file;
  if (stat(index.path.c_str(), &file) == 0) {
    std::string error;
    IndexReaders::Lease db = index.readers.lease(error);
    if (!db)
      return failure(503, error);
    stores = db->storeStatus();
    if (!db->ok())
      return failure(500, db->errorText());
  }
  for (const std::string &key : configuredStores())
    if (std::none_of(stores.begin(), stores.end(),
                     [&key](const StoreStatus &store) { return store.agentKey == key; }))
      stores.push_back({key, 0, false, 0});
  json list = json::array();
  for (const StoreStatus &store : stores) {
    std::string directory;
    readAgentValue(store.agentKey, kMailPathValue, directory);
    list.push_back({{"name", storeName(store.agentKey)},
                    {"path", directory},
                    {"messages", store.messages},
                    {"indexed", isoDate(store.indexed, store.indexedAt)}});
  }
  return {200, jsonText({{"stores", list}})};
}
