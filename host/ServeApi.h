// The JSON answers of the search page's API. Each takes a read-only connection of its own to
// the index from a pool, so that they may run beside an index run and on several threads.
#pragma once

#include "host/HitTable.h"
#include "host/IndexReaders.h"

#include <map>
#include <string>

struct ApiAnswer {
  int status = 200;
  std::string json;
};

using ApiParams = std::map<std::string, std::string>;

// What the answers keep between requests.
struct ServedIndex {
  explicit ServedIndex(const std::string &path) : path(path), readers(path) {}
  // Makes ready what the first searches would wait for; nothing without an index yet.
  void warm();
  const std::string path;
  IndexReaders readers;
  HitTable hits;
};

// GET /api/search: q, sort, offset, limit, store, year.
ApiAnswer searchAnswer(ServedIndex &index, const ApiParams &params);
// GET /api/message/ID
ApiAnswer messageAnswer(ServedIndex &index, const std::string &id);
// GET /api/stores
ApiAnswer storesAnswer(ServedIndex &index);
