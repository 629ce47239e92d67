// The Date header reader, over the date forms that mail programs write.
#include "bench/KernelFixtures.h"
#include "bench/MailCorpus.h"
#include "store/MAILDATE.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

void BM_MailDate(benchmark::State &state) {
  loadAgentStrings();
  std::vector<CString> texts;
  int64_t bytes = 0;
  for (const std::string &date : MailCorpus::dates()) {
    texts.emplace_back(date.c_str());
    bytes += static_cast<int64_t>(date.size());
  }
  for (auto _ : state) {
    for (const CString &text : texts) {
      const CMailDate parsed(text);
      benchmark::DoNotOptimize(parsed.getDay());
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * bytes);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * texts.size()));
}
BENCHMARK(BM_MailDate);

} // namespace
