// Each message's store, local year and date, held in memory by a server and renewed when the
// index changes. One pass over the full-text table's matches then counts a search's hits by
// store and year, counts those of the store or year the person picked, and finds the page of
// them newest or oldest first. Looking up each hit's object, mailbox and agent instead took
// most of a search's time for a common word.
//
// While one request renews the table after an index run's commit, the others use the one
// before: their hits may miss the messages of the last few seconds of a run.
#pragma once

#include "host/IndexDb.h"
#include "host/IndexReaders.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// The store (by the name the page shows) and year the hits are narrowed to.
struct HitFilter {
  std::string store; // empty: every store
  int year = 0;      // local; 0: every year
};

struct HitTally {
  std::vector<HitCount> counts; // the query's hits, by store and year
  int64_t total = 0;            // those the filter keeps
  // Whether `page` holds the ids of the query's page among those, in order; a page by
  // relevance, or of a query with conditions on folders or clients, is the index's to find.
  bool paged = false;
  std::vector<int64_t> page;
};

class HitTable {
public:
  // Reads the table now, so that the first searches need not wait for it.
  void warm(IndexReaders::Lease &db) { current(db); }
  // False with `error` as IndexDb::search gives it.
  bool tally(IndexReaders::Lease &db, const SearchQuery &query, const HitFilter &filter,
             HitTally &tally, std::string &error);

private:
  struct Snapshot;
  static std::shared_ptr<const Snapshot> load(IndexDb &db, uint64_t generation);
  std::shared_ptr<const Snapshot> current(IndexReaders::Lease &db);

  std::mutex lock_;
  std::condition_variable renewed_;
  std::shared_ptr<const Snapshot> snapshot_;
  bool renewing_ = false;
};

// Whether a count of `filter`'s store and year.
bool filterKeeps(const HitFilter &filter, const std::string &agentKey, int year);
