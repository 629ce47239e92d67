// The fault guard around a read of mapped bytes: what a guarded call costs beside the work,
// which a walk pays three times per message (framing, measuring, copying).
#include "platform/FaultGuard.h"

#include <benchmark/benchmark.h>

namespace {

void BM_RunGuarded(benchmark::State &state) {
  int counter = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(runGuarded([&] { ++counter; }));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_RunGuarded);

} // namespace
