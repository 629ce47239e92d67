// The header block of a message: its length, the five field searches, and the whole of a
// message's construction that they are part of.
#include "bench/KernelFixtures.h"
#include "clients/Eudora.h"
#include "store/MailHeaders.h"

#include <benchmark/benchmark.h>

#include <cstdint>

namespace {

const unsigned char *bytesOf(const std::string &text) {
  return reinterpret_cast<const unsigned char *>(text.data());
}

void BM_HeaderLength(benchmark::State &state) {
  const std::string &message = sampleMessage(5 * 1024);
  const CEudoraMailMsg probe;
  const auto length = static_cast<uint32_t>(message.size());
  uint32_t header = 0;
  for (auto _ : state) {
    header = probe.getHeaderLength(bytesOf(message), length);
    benchmark::DoNotOptimize(header);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * header);
}
BENCHMARK(BM_HeaderLength);

// Searches the header block of an everyday message for one field, by its index in
// {Date, To, From, Subject, Cc}: the order in which a message fills them.
void BM_FindField(benchmark::State &state) {
  loadAgentStrings();
  const CString *const names[] = {&hdrDate, &hdrTo, &hdrFrom, &hdrSubject, &hdrCc};
  const CString &name = *names[state.range(0)];
  const std::string &message = sampleMessage(5 * 1024);
  const CEudoraMailMsg probe;
  const uint32_t header =
      probe.getHeaderLength(bytesOf(message), static_cast<uint32_t>(message.size()));
  for (auto _ : state)
    benchmark::DoNotOptimize(findField(name.GetString(), bytesOf(message), header));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * header);
  state.SetLabel(name.GetString() + 1);
}
BENCHMARK(BM_FindField)->DenseRange(0, 4);

// A whole message built from its bytes, as each step of a walk builds one: checksum, header
// block, fields and body copy.
void BM_MessageInit(benchmark::State &state) {
  loadAgentStrings();
  const std::string &message = sampleMessage(static_cast<size_t>(state.range(0)));
  const CString mailbox("/home/ann/mail/In.mbx");
  for (auto _ : state) {
    CEudoraMailMsg built;
    benchmark::DoNotOptimize(
        built.init(bytesOf(message), static_cast<uint32_t>(message.size()), mailbox));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(message.size()));
}
BENCHMARK(BM_MessageInit)->Arg(5 * 1024)->Arg(256 * 1024);

} // namespace
