// The JSON answers of the search page's API, each from a connection of its own to the index,
// so that they may run beside an index run and on several threads.
#pragma once

#include <map>
#include <string>

struct ApiAnswer {
  int status = 200;
  std::string json;
};

using ApiParams = std::map<std::string, std::string>;

// GET /api/search: q, sort, offset, limit, store, year.
ApiAnswer searchAnswer(const std::string &databasePath, const ApiParams &params);
// GET /api/message/ID
ApiAnswer messageAnswer(const std::string &databasePath, const std::string &id);
// GET /api/stores
ApiAnswer storesAnswer(const std::string &databasePath);
