// mhhost search: ranked hits from the index, as lines for a person or as JSON lines.
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/IndexDb.h"
#include "host/Json.h"
#include "host/Terminal.h"
#include "host/TimeText.h"
#include "host/VisibleText.h"

#include <cstdio>
#include <cstdlib>

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

bool readLimit(const std::string &text, int64_t &limit) {
  if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != text.npos)
    return false;
  limit = std::strtoll(text.c_str(), nullptr, 10);
  return limit > 0;
}

// The snippet's marks: private-use characters, which mail text does not hold, so that what
// the mail holds is made visible first and only our marks become the terminal's bold.
const char kMarkStart[] = "\xEE\x80\x80", kMarkEnd[] = "\xEE\x80\x81";

std::string replaced(std::string text, const std::string &from, const std::string &to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

void printHit(const SearchHit &hit, const std::string &markStart, const std::string &markEnd) {
  const std::string snippet = replaced(
      replaced(oneLine(visibleText(hit.snippet)), kMarkStart, markStart), kMarkEnd, markEnd);
  std::printf("%lld  %s  %s  %s\n    %s\n", static_cast<long long>(hit.id),
              formatDate(hit.hasDate, hit.date).c_str(), oneLine(visibleText(hit.from)).c_str(),
              oneLine(visibleText(hit.subject)).c_str(), snippet.c_str());
}

void printJsonHit(const SearchHit &hit) {
  const std::string date = hit.hasDate ? std::to_string(hit.date) : "null";
  std::printf("{\"id\":%lld,\"path\":%s,\"offset\":%lu,\"length\":%lu,\"time\":%ld,"
              "\"date\":%s,\"from\":%s,\"subject\":%s,\"snippet\":%s}\n",
              static_cast<long long>(hit.id), jsonString(hit.path).c_str(),
              static_cast<unsigned long>(hit.offset), static_cast<unsigned long>(hit.length),
              static_cast<long>(hit.time), date.c_str(), jsonString(hit.from).c_str(),
              jsonString(hit.subject).c_str(), jsonString(oneLine(hit.snippet)).c_str());
}

} // namespace

int runSearch(const CommandLine &line, const HostSettings &settings) {
  SearchQuery query;
  query.match = line.arguments.front();
  query.agentKey = settings.agentKey;
  if (line.has("limit") && !readLimit(line.value("limit"), query.limit))
    return reportUsageError("search", "--limit wants a number of 1 or more");
  if (line.has("since") && !parseDateArgument(line.value("since"), false, query.since))
    return reportUsageError("search", "--since wants a date: YYYY-MM-DD or \"YYYY-MM-DD HH:MM\"");
  if (line.has("until") && !parseDateArgument(line.value("until"), true, query.until))
    return reportUsageError("search", "--until wants a date: YYYY-MM-DD or \"YYYY-MM-DD HH:MM\"");
  query.dated = line.has("since") || line.has("until");
  const bool json = line.has("json");
  const bool bold = standardOutputIsTerminal();
  if (!json) {
    query.markStart = kMarkStart;
    query.markEnd = kMarkEnd;
  }
  std::string error;
  const std::unique_ptr<IndexDb> db =
      IndexDb::open(settings.databasePath, IndexDb::Access::ReadOnly, error);
  if (!db)
    return reportError(error);
  std::vector<SearchHit> hits;
  if (!db->search(query, hits, error))
    return reportUsageError("search", "the query can't be read: " + error);
  if (!db->ok())
    return reportError(db->errorText());
  for (const SearchHit &hit : hits)
    json ? printJsonHit(hit) : printHit(hit, bold ? "\033[1m" : "[", bold ? "\033[0m" : "]");
  if (hits.empty() && !json)
    std::fprintf(stderr, "no hits\n");
  return kExitOk;
}
