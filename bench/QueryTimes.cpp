// 200 queries: words, phrases, OR and NOT, prefixes, punctuation, fields, dates and ranges,
// folders, clients, ids, sorts and counts, drawn from the generated mail's own words.
#include "bench/QueryTimes.h"

#include "bench/MailCorpus.h"
#include "bench/ProcessRun.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

const char *const kCommon[] = {"report",  "meeting", "review", "numbers", "quarter", "budget",
                               "project", "draft",   "invoice", "customer", "server",  "release",
                               "problem", "schedule", "notes",  "office"};
const char *const kForms[] = {
    "%s",           "%s %s",           "\"%s %s\"",       "%s OR %s",
    "%s -%s",       "NOT %s %s",       "(%s OR %s) %s",   "%s*",
    "subject:%s",   "from:example.org %s", "body:%s %s",  "%s date:1996",
    "%s date:1996-03..1997-06", "%s date:..1996", "%s folder:Archive", "%s client:CLIENT",
    "id:42",        "%s attachment:pdf", "2.5%% %s",     "%s and not %s",
};

std::string format(const char *form, const char *a, const char *b, const char *c) {
  char text[256];
  std::snprintf(text, sizeof text, form, a, b, c);
  return text;
}

} // namespace

void measureQueries(const std::string &mhhost, const std::string &registry,
                    const std::string &database, const std::string &client) {
  BenchRandom random(1998);
  std::vector<double> milliseconds;
  constexpr unsigned kCommonCount = sizeof kCommon / sizeof kCommon[0];
  for (int i = 0; i < 200; ++i) {
    const char *form = kForms[i % (sizeof kForms / sizeof kForms[0])];
    std::string query = format(form, kCommon[random.below(kCommonCount)],
                               kCommon[random.below(kCommonCount)],
                               kCommon[random.below(kCommonCount)]);
    const size_t at = query.find("CLIENT");
    if (at != std::string::npos)
      query.replace(at, 6, client);
    std::vector<std::string> argv = {mhhost, "--registry", registry, "--db", database,
                                     "search", query};
    // Every fifth sorts by relevance, every seventh only counts.
    if (i % 5 == 4)
      argv.insert(argv.end(), {"--sort", "relevance"});
    if (i % 7 == 6)
      argv.push_back("--count");
    const ProcessRun run = runProcess(argv, {}, false);
    if (run.started && (run.exitStatus == 0 || run.exitStatus == 1))
      milliseconds.push_back(run.seconds * 1000);
  }
  if (milliseconds.empty()) {
    std::printf("  mhhost search: no query ran\n");
    return;
  }
  std::sort(milliseconds.begin(), milliseconds.end());
  const auto at = [&](double share) {
    return milliseconds[std::min(milliseconds.size() - 1,
                                 static_cast<size_t>(share * static_cast<double>(milliseconds.size())))];
  };
  std::printf("  mhhost search, %zu queries of every form (a process each): p50 %.1f ms, "
              "p99 %.1f ms, slowest %.1f ms\n",
              milliseconds.size(), at(0.50), at(0.99), milliseconds.back());
}
