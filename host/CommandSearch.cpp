// mhhost search: ranked hits from the index, as lines for a person or as JSON lines.
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/HitSnippets.h"
#include "host/IndexDb.h"
#include "host/Json.h"
#include "host/SearchRequest.h"
#include "host/Terminal.h"
#include "host/TimeText.h"
#include "host/VisibleText.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

// Line breaks and runs of blanks as one blank: a snippet or a field on one line.
std::string oneLine(const std::string &text) {
  std::string line;
  line.reserve(text.size());
  bool blank = false;
  for (const char c : text) {
    const bool space = c == ' ' || c == '\r' || c == '\n' || c == '\t';
    if (space && (blank || line.empty())) {
      blank = true;
      continue;
    }
    line += space ? ' ' : c;
    blank = space;
  }
  while (!line.empty() && line.back() == ' ')
    line.pop_back();
  return line;
}

std::string replaced(std::string text, const std::string &from, const std::string &to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

void printHit(const SearchHit &hit, const HitPlace &place, const std::string &markStart,
              const std::string &markEnd) {
  const std::string snippet = replaced(
      replaced(oneLine(visibleText(hit.snippet)), kMarkStart, markStart), kMarkEnd, markEnd);
  std::printf("%lld  %s  %s  %s  (%s: %s)\n    %s\n", static_cast<long long>(hit.id),
              formatDate(hit.hasDate, hit.date).c_str(), oneLine(visibleText(hit.from)).c_str(),
              oneLine(visibleText(hit.subject)).c_str(), visibleText(place.store).c_str(),
              visibleText(place.folder).c_str(), snippet.c_str());
}

void printJsonHit(const SearchHit &hit, const HitPlace &place) {
  const std::string date = hit.hasDate ? std::to_string(hit.date) : "null";
  std::printf("{\"id\":%lld,\"store\":%s,\"folder\":%s,\"path\":%s,\"offset\":%lu,"
              "\"length\":%lu,\"time\":%ld,\"date\":%s,\"from\":%s,\"subject\":%s,"
              "\"snippet\":%s}\n",
              static_cast<long long>(hit.id), jsonString(place.store).c_str(),
              jsonString(place.folder).c_str(), jsonString(hit.path).c_str(),
              static_cast<unsigned long>(hit.offset), static_cast<unsigned long>(hit.length),
              static_cast<long>(hit.time), date.c_str(), jsonString(hit.from).c_str(),
              jsonString(hit.subject).c_str(), jsonString(oneLine(hit.snippet)).c_str());
}

bool readCount(const std::string &text, int64_t &value) {
  if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != text.npos)
    return false;
  value = std::strtoll(text.c_str(), nullptr, 10);
  return true;
}

} // namespace

int runSearch(const CommandLine &line, const HostSettings &settings) {
  // Several arguments are one query: the words of all must be found.
  std::string text;
  for (const std::string &argument : line.arguments)
    text += (text.empty() ? "" : " ") + argument;
  SearchQuery query;
  QueryError problem;
  if (!readSearchQuery(text, query, problem))
    return reportUsageError("search", "the query can't be read: " + problem.what + "\n  " +
                                          visibleText(text) + "\n  " +
                                          std::string(problem.position, ' ') + "^");
  query.agentKey = settings.agentKey;
  if (line.has("limit") && (!readCount(line.value("limit"), query.limit) || query.limit == 0))
    return reportUsageError("search", "--limit wants a number of 1 or more");
  if (line.has("offset") && !readCount(line.value("offset"), query.offset))
    return reportUsageError("search", "--offset wants a number of 0 or more");
  int64_t since = 0, until = 0;
  if (line.has("since") && !parseDateArgument(line.value("since"), false, since))
    return reportUsageError("search", "--since wants a date: YYYY-MM-DD or \"YYYY-MM-DD HH:MM\"");
  if (line.has("until") && !parseDateArgument(line.value("until"), true, until))
    return reportUsageError("search", "--until wants a date: YYYY-MM-DD or \"YYYY-MM-DD HH:MM\"");
  if (line.has("since"))
    query.since = std::max(query.since, since);
  if (line.has("until"))
    query.until = std::min(query.until, until);
  query.dated = query.dated || line.has("since") || line.has("until");
  const std::string sort = line.value("sort", "newest");
  if (sort == "oldest")
    query.order = SearchQuery::Order::Oldest;
  else if (sort == "relevance")
    query.order = SearchQuery::Order::Relevance;
  else if (sort != "newest")
    return reportUsageError("search", "--sort is newest, oldest or relevance");
  const std::string output = line.has("json") ? "json" : line.value("output", "summary");
  if (output != "summary" && output != "ids" && output != "files" && output != "json")
    return reportUsageError("search", "--output is summary, ids, files or json");
  if (output == "summary") {
    query.markStart = kMarkStart;
    query.markEnd = kMarkEnd;
  }
  std::string error;
  const std::unique_ptr<IndexDb> db =
      IndexDb::open(settings.databasePath, IndexDb::Access::ReadOnly, error);
  if (!db)
    return reportError(error);
  if (line.has("count")) {
    const int64_t count = db->countHits(query, error);
    if (count < 0)
      return reportUsageError("search", "the query can't be read: " + error);
    if (!db->ok())
      return reportError(db->errorText());
    std::printf("%lld\n", static_cast<long long>(count));
    return kExitOk;
  }
  std::vector<SearchHit> hits;
  if (!db->search(query, hits, error))
    return reportUsageError("search", "the query can't be read: " + error);
  if (!db->ok())
    return reportError(db->errorText());
  if (output == "summary" || output == "json")
    addSnippets(*db, query, hits);
  const bool bold = standardOutputIsTerminal();
  PlaceNames places;
  for (const SearchHit &hit : hits) {
    if (output == "ids")
      std::printf("%lld\n", static_cast<long long>(hit.id));
    else if (output == "files")
      std::printf("%s\t%lu\n", visibleText(hit.path).c_str(),
                  static_cast<unsigned long>(hit.offset));
    else if (output == "json")
      printJsonHit(hit, places.of(hit));
    else
      printHit(hit, places.of(hit), bold ? "\033[1m" : "[", bold ? "\033[0m" : "]");
  }
  if (hits.empty() && output == "summary")
    std::fprintf(stderr, "no hits\n");
  return kExitOk;
}
