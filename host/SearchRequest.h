// What the search command and the search page share: a query read into a SearchQuery, the
// marks around matched words, and where a hit lives.
#pragma once

#include "host/IndexDb.h"
#include "host/QueryParser.h"

#include <map>
#include <string>
#include <utility>

// The snippet's marks: private-use characters, which mail text does not hold, so that what
// the mail holds is made visible first and only our marks become a reader's emphasis.
extern const char kMarkStart[], kMarkEnd[];

// Reads the person's query into `query`'s conditions (its other fields are left alone).
bool readSearchQuery(const std::string &text, SearchQuery &query, QueryError &problem);

// The name a store goes by: its client's, or the agent key of a store of its own.
std::string storeName(const std::string &agentKey);

// Where a hit lives: its store and its folder, the mailbox's path below the store's mail
// directory.
struct HitPlace {
  std::string store, folder;
};

class PlaceNames {
public:
  HitPlace of(const SearchHit &hit);

private:
  std::map<std::string, std::pair<std::string, std::string>> stores_; // key: name, directory
};
