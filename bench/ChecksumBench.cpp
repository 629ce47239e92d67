// The message checksum over ranges from a short message to a large attachment.
#include "bench/KernelFixtures.h"
#include "store/MailMsg.h"

#include <benchmark/benchmark.h>

#include <cstdint>

namespace {

void BM_Checksum(benchmark::State &state) {
  const std::string &bytes = randomBytes(static_cast<size_t>(state.range(0)));
  const auto *start = reinterpret_cast<const unsigned char *>(bytes.data());
  const auto length = static_cast<uint32_t>(bytes.size());
  for (auto _ : state)
    benchmark::DoNotOptimize(CMailMsg::computeChecksum(start, length));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * length);
}
// 5 KB is an everyday message; 1 MB fills the L2 cache of the machines we measure on; 16 MB
// does not fit it.
BENCHMARK(BM_Checksum)->Arg(5 * 1024 + 3)->Arg(64 * 1024)->Arg(1 << 20)->Arg(16 << 20);

} // namespace
