// 200 queries: words, phrases, OR and NOT, prefixes, punctuation, fields, dates and ranges,
// folders, clients, ids, sorts and counts, drawn from the generated mail's own words.
#include "bench/QueryTimes.h"

#include "bench/MailCorpus.h"
#include "bench/ProcessRun.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

// YEAR, SENDER, FOLDER and CLIENT stand for the store's; each %s for one of its words.
const char *const kForms[] = {
    "%s",
    "%s %s",
    "\"%s %s\"",
    "%s OR %s",
    "%s -%s",
    "NOT %s %s",
    "(%s OR %s) %s",
    "%s*",
    "subject:%s",
    "from:SENDER %s",
    "body:%s %s",
    "%s date:YEAR",
    "%s date:YEAR-03..YEAR-09",
    "%s date:..YEAR",
    "%s folder:FOLDER",
    "%s client:CLIENT",
    "id:42",
    "%s attachment:pdf",
    "2.5%% %s",
    "%s and not %s",
};

std::string format(const char *form, const char *a, const char *b, const char *c) {
  char text[256];
  std::snprintf(text, sizeof text, form, a, b, c);
  return text;
}

void replaceAll(std::string &text, const std::string &from, const std::string &to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
}

} // namespace

QueryWords everydayQueryWords() {
  return QueryWords{{"report", "meeting", "review", "numbers", "quarter", "budget", "project",
                     "draft", "invoice", "customer", "server", "release", "problem", "schedule",
                     "notes", "office"},
                    "1996",
                    "example.org",
                    "Archive"};
}

void measureQueries(const std::string &mhhost, const std::string &registry,
                    const std::string &database, const std::string &client,
                    const QueryWords &words) {
  BenchRandom random(1998);
  std::vector<double> milliseconds;
  std::vector<std::pair<double, std::string>> slowest; // the time and the command's query
  const auto word = [&] {
    return words.words[random.below(static_cast<uint32_t>(words.words.size()))].c_str();
  };
  for (int i = 0; i < 200; ++i) {
    const char *form = kForms[i % (sizeof kForms / sizeof kForms[0])];
    std::string query = format(form, word(), word(), word());
    replaceAll(query, "YEAR", words.year);
    replaceAll(query, "SENDER", words.senderWord);
    replaceAll(query, "FOLDER", words.folder);
    replaceAll(query, "CLIENT", client);
    std::vector<std::string> argv = {mhhost,   "--registry", registry, "--db",
                                     database, "search",     query};
    // Every fifth sorts by relevance, every seventh only counts.
    if (i % 5 == 4)
      argv.insert(argv.end(), {"--sort", "relevance"});
    if (i % 7 == 6)
      argv.push_back("--count");
    const ProcessRun run = runProcess(argv, {}, true);
    if (!run.started || (run.exitStatus != 0 && run.exitStatus != 1))
      continue;
    milliseconds.push_back(run.seconds * 1000);
    std::string shown = query;
    for (size_t a = 7; a < argv.size(); ++a)
      shown += " " + argv[a];
    slowest.emplace_back(run.seconds * 1000, shown);
  }
  if (milliseconds.empty()) {
    std::printf("  mhhost search: no query ran\n");
    return;
  }
  std::sort(milliseconds.begin(), milliseconds.end());
  const auto at = [&](double share) {
    return milliseconds[std::min(
        milliseconds.size() - 1,
        static_cast<size_t>(share * static_cast<double>(milliseconds.size())))];
  };
  std::printf("  mhhost search, %zu queries of every form (a process each): p50 %.1f ms, "
              "p99 %.1f ms, slowest %.1f ms\n",
              milliseconds.size(), at(0.50), at(0.99), milliseconds.back());
  std::sort(slowest.rbegin(), slowest.rend());
  for (size_t i = 0; i < std::min<size_t>(5, slowest.size()); ++i)
    std::printf("    %6.1f ms  %s\n", slowest[i].first, slowest[i].second.c_str());
}
