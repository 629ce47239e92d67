// The scans that cut a mail file into messages: the generic scan under the Eudora and
// Internet Mail delimiters, and the Netscape and Pegasus scans, each over 16 MB of mail.
// content:0 is everyday text, content:1 mostly base64 attachments.
#include "bench/KernelFixtures.h"
#include "clients/Eudora.h"
#include "clients/InternetMail.h"
#include "clients/NSMFile.h"
#include "clients/Pegasus.h"
#include "platform/FaultGuard.h"

#include <benchmark/benchmark.h>

#include <cstdint>

namespace {

// Frames the whole mail file again and again, from its first byte; mapped bytes are read
// only inside the guard, as the agent reads them.
template <class MailFile>
void scanMailFile(benchmark::State &state, Client client, MailboxContent content) {
  MailFile file;
  if (file.init(CString(sampleMailbox(client, content).c_str())) < 0) {
    state.SkipWithError("the mail file does not open");
    return;
  }
  uint64_t messages = 0;
  for (auto _ : state) {
    file.msgOffset = 0;
    file.msgLength = 0;
    messages = 0;
    const bool whole = runGuarded([&] {
      while (file.nextMessage() == 0)
        ++messages;
    });
    if (!whole)
      state.SkipWithError("the mail file faulted");
    benchmark::DoNotOptimize(messages);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * file.fileSize);
  state.counters["messages"] = static_cast<double>(messages);
}

// Each scan over text (everyday messages) and over mail whose bytes are mostly base64.
void BM_GenericScan_Eudora(benchmark::State &state) {
  scanMailFile<CEudoraMailFile>(state, Client::Eudora, MailboxContent(state.range(0)));
}
void BM_GenericScan_InternetMail(benchmark::State &state) {
  scanMailFile<CInternetMailMailFile>(state, Client::InternetMail, MailboxContent(state.range(0)));
}
void BM_NetscapeScan(benchmark::State &state) {
  scanMailFile<CNetscapeMailFile>(state, Client::Netscape, MailboxContent(state.range(0)));
}
void BM_PegasusScan(benchmark::State &state) {
  scanMailFile<CPegasusMailFile>(state, Client::Pegasus, MailboxContent(state.range(0)));
}
void contents(benchmark::internal::Benchmark *benchmark) {
  benchmark->ArgName("content")
      ->Arg(int(MailboxContent::Everyday))
      ->Arg(int(MailboxContent::Mixed));
}
BENCHMARK(BM_GenericScan_Eudora)->Apply(contents);
BENCHMARK(BM_GenericScan_InternetMail)->Apply(contents);
BENCHMARK(BM_NetscapeScan)->Apply(contents);
// content:2, every body line starting with "From": each one passes the quick test.
BENCHMARK(BM_NetscapeScan)->ArgName("content")->Arg(int(MailboxContent::FromLines));
BENCHMARK(BM_PegasusScan)->Apply(contents);

} // namespace
