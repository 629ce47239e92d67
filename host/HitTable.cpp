// A search's hits counted and paged from a table in memory.
#include "host/HitTable.h"

#include "host/SearchRequest.h"
#include "host/TimeText.h"

#include <algorithm>
#include <limits>
#include <map>
#include <unordered_map>

struct HitTable::Snapshot {
  uint64_t generation = 0;
  // By object, in the order of ids: what a pass over the matches reads of each, side by side.
  struct Object {
    int64_t id;
    int64_t date; // IndexDb::kNoDate for a message without one
    uint32_t bucket;
  };
  std::vector<Object> objects;
  // By bucket: the store's agent key and the year (0: no date).
  std::vector<std::pair<std::string, int>> bucketNames;
};

namespace {

// The local year of a moment, by the same first seconds of years as a search's year filter.
class LocalYears {
public:
  int of(int64_t seconds) {
    const time_t moment = static_cast<time_t>(seconds);
    struct tm parts;
    if (gmtime_r(&moment, &parts) == nullptr)
      return 0;
    int year = parts.tm_year + 1900;
    // A zone's offset is under a day: the year in UTC is the local one or next to it.
    if (seconds < start(year))
      --year;
    else if (seconds >= start(year + 1))
      ++year;
    return year;
  }

private:
  int64_t start(int year) {
    auto found = starts_.find(year);
    if (found == starts_.end())
      found = starts_.emplace(year, localMoment(year, 1, 1)).first;
    return found->second;
  }

  std::unordered_map<int, int64_t> starts_;
};

} // namespace

std::shared_ptr<const HitTable::Snapshot> HitTable::load(IndexDb &db, uint64_t generation) {
  auto table = std::make_shared<Snapshot>();
  table->generation = generation;
  std::map<std::pair<int64_t, int>, uint32_t> bucketOf; // agent id, year
  std::map<int64_t, std::string> agentKeys;
  LocalYears years;
  db.readObjectFacets(
      [&](int64_t agent, const std::string &key) { agentKeys[agent] = key; },
      [&](int64_t id, int64_t agent, bool hasDate, int64_t date) {
        const int year = hasDate ? years.of(date) : 0;
        auto bucket = bucketOf.find({agent, year});
        if (bucket == bucketOf.end()) {
          bucket = bucketOf.emplace(std::make_pair(agent, year), table->bucketNames.size()).first;
          table->bucketNames.emplace_back(agentKeys[agent], year);
        }
        table->objects.push_back({id, hasDate ? date : IndexDb::kNoDate, bucket->second});
      });
  return table;
}

std::shared_ptr<const HitTable::Snapshot> HitTable::current(IndexReaders::Lease &db) {
  std::unique_lock<std::mutex> hold(lock_);
  // A table of an earlier generation serves while another request renews it; before the
  // first there is none, and the others wait for it rather than read the index too.
  for (;;) {
    if (snapshot_ && (snapshot_->generation == db.generation() || renewing_))
      return snapshot_;
    if (!renewing_)
      break;
    renewed_.wait(hold);
  }
  renewing_ = true;
  hold.unlock();
  std::shared_ptr<const Snapshot> table = load(*db, db.generation());
  hold.lock();
  renewing_ = false;
  renewed_.notify_all();
  if (!db->ok())
    return nullptr;
  if (!snapshot_ || snapshot_->generation < table->generation)
    snapshot_ = table;
  return table;
}

bool filterKeeps(const HitFilter &filter, const std::string &agentKey, int year) {
  return (filter.store.empty() || storeName(agentKey) == filter.store) &&
         (filter.year == 0 || year == filter.year);
}

namespace {

// The first `offset` + `limit` hits of a query in its order, as the index orders them: by
// date, then id, messages without a date last. Only that many are kept while the hits come,
// in a heap whose top is the last of them in that order, the one to go first.
class PageOfHits {
public:
  explicit PageOfHits(const SearchQuery &query)
      : oldest_(query.order == SearchQuery::Order::Oldest),
        offset_(static_cast<size_t>(query.offset)),
        kept_(offset_ + static_cast<size_t>(query.limit)) {}

  void add(int64_t date, int64_t id) {
    // Oldest first puts the undated last: they sort as the latest date there is.
    const Hit hit(oldest_ && date == IndexDb::kNoDate ? std::numeric_limits<int64_t>::max() : date,
                  id);
    if (heap_.size() < kept_) {
      heap_.push_back(hit);
      std::push_heap(heap_.begin(), heap_.end(), before_);
    } else if (before_(hit, heap_.front())) {
      std::pop_heap(heap_.begin(), heap_.end(), before_);
      heap_.back() = hit;
      std::push_heap(heap_.begin(), heap_.end(), before_);
    }
  }

  std::vector<int64_t> page() {
    std::sort_heap(heap_.begin(), heap_.end(), before_);
    std::vector<int64_t> ids;
    for (size_t i = offset_; i < heap_.size(); ++i)
      ids.push_back(heap_[i].second);
    return ids;
  }

private:
  using Hit = std::pair<int64_t, int64_t>; // date, id
  // Whether one hit comes before another on the page.
  struct Before {
    bool oldest;
    bool operator()(const Hit &a, const Hit &b) const { return oldest ? a < b : a > b; }
  };

  const bool oldest_;
  const Before before_{oldest_};
  const size_t offset_, kept_;
  std::vector<Hit> heap_;
};

} // namespace

bool HitTable::tally(IndexReaders::Lease &db, const SearchQuery &query, const HitFilter &filter,
                     HitTally &tally, std::string &error) {
  tally = HitTally();
  // Conditions on the mailbox or the client are the index's to judge.
  const bool inMemory = query.folders.empty() && query.clientTags.empty() && query.ids.empty() &&
                        query.agentKey.empty();
  const std::shared_ptr<const Snapshot> table = inMemory ? current(db) : nullptr;
  if (!table) {
    tally.counts = db->countHitsByStoreAndYear(query, error);
    for (const HitCount &counted : tally.counts)
      tally.total += filterKeeps(filter, counted.agentKey, counted.year) ? counted.count : 0;
    return error.empty();
  }
  const size_t buckets = table->bucketNames.size();
  std::vector<int64_t> counts(buckets);
  std::vector<char> kept(buckets);
  for (size_t bucket = 0; bucket < buckets; ++bucket)
    kept[bucket] =
        filterKeeps(filter, table->bucketNames[bucket].first, table->bucketNames[bucket].second);
  tally.paged = query.match.empty() || query.order != SearchQuery::Order::Relevance;
  const std::vector<Snapshot::Object> &objects = table->objects;
  PageOfHits page(query);
  const auto take = [&](size_t object) {
    const int64_t date = objects[object].date;
    if (query.dated && (date == IndexDb::kNoDate || date < query.since || date > query.until))
      return;
    const uint32_t bucket = objects[object].bucket;
    ++counts[bucket];
    if (kept[bucket] && tally.paged)
      page.add(date, objects[object].id);
  };
  if (query.match.empty()) {
    for (size_t object = 0; object < objects.size(); ++object)
      take(object);
  } else {
    // The matches come in the order of ids: each is sought from the last one on. A row whose
    // object is gone is in no bucket.
    size_t from = 0;
    const bool read = db->eachTextMatch(query, error, [&](int64_t id) {
      from = static_cast<size_t>(
          std::lower_bound(
              objects.begin() + static_cast<ptrdiff_t>(from), objects.end(), id,
              [](const Snapshot::Object &object, int64_t sought) { return object.id < sought; }) -
          objects.begin());
      if (from < objects.size() && objects[from].id == id)
        take(from);
    });
    if (!read)
      return false;
  }
  for (size_t bucket = 0; bucket < buckets; ++bucket) {
    if (counts[bucket] == 0)
      continue;
    tally.counts.push_back(
        {table->bucketNames[bucket].first, table->bucketNames[bucket].second, counts[bucket]});
    tally.total += kept[bucket] ? counts[bucket] : 0;
  }
  if (tally.paged)
    tally.page = page.page();
  return true;
}
