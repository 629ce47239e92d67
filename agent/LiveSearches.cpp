// LiveSearches: the open searches by handle, and the end of each.
#include "agent/LiveSearches.h"

#include "store/MailInd.h"

#include <utility>

namespace {

AgentHandle handleOf(const OpenSearch &search) {
  return reinterpret_cast<AgentHandle>(search.index.get());
}

} // namespace

LiveSearches::LiveSearches() = default;
LiveSearches::~LiveSearches() = default;

AgentHandle LiveSearches::open(OpenSearch search) {
  searches_.push_back(std::move(search));
  return handleOf(searches_.back());
}

OpenSearch *LiveSearches::find(AgentHandle handle) {
  for (OpenSearch &search : searches_)
    if (handleOf(search) == handle)
      return &search;
  return nullptr;
}

bool LiveSearches::close(AgentHandle handle) {
  for (OpenSearch &search : searches_) {
    if (handleOf(search) != handle)
      continue;
    std::swap(search, searches_.back());
    searches_.pop_back();
    return true;
  }
  return false;
}
