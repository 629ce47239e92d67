// What the search command and the search page share.
#include "host/SearchRequest.h"

#include "host/AgentRegistry.h"
#include "host/Clients.h"

#include <ctime>

const char kMarkStart[] = "\xEE\x80\x80", kMarkEnd[] = "\xEE\x80\x81";

bool readSearchQuery(const std::string &text, SearchQuery &query, QueryError &problem) {
  ParsedQuery parsed;
  if (!parseQuery(text, std::time(nullptr), parsed, problem))
    return false;
  query.match = parsed.match;
  query.without = parsed.without;
  query.folders = parsed.folders;
  query.clientTags = parsed.clientTags;
  query.ids = parsed.ids;
  query.dated = parsed.dated;
  query.since = parsed.since;
  query.until = parsed.until;
  return true;
}

std::string storeName(const std::string &agentKey) {
  const ClientInfo *const client = clientOfKey(agentKey);
  return client != nullptr && agentKey == defaultAgentKey(*client) ? client->name : agentKey;
}

HitPlace PlaceNames::of(const SearchHit &hit) {
  auto found = stores_.find(hit.agentKey);
  if (found == stores_.end()) {
    std::string mailDirectory;
    readAgentValue(hit.agentKey, kMailPathValue, mailDirectory);
    found =
        stores_.emplace(hit.agentKey, std::make_pair(storeName(hit.agentKey), mailDirectory)).first;
  }
  const std::string &directory = found->second.second;
  const bool below = !directory.empty() && hit.path.size() > directory.size() + 1 &&
                     hit.path.compare(0, directory.size(), directory) == 0 &&
                     hit.path[directory.size()] == '/';
  return {found->second.first, below ? hit.path.substr(directory.size() + 1) : hit.path};
}
