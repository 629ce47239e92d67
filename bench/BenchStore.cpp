// The store a whole-process benchmark measures.
#include "bench/BenchStore.h"

#include "bench/BenchHost.h"
#include "bench/RealVocabulary.h"
#include "cmn/Registry.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

double megabytes(uint64_t bytes) {
  return static_cast<double>(bytes) / (1024.0 * 1024.0);
}

uint64_t fileSize(const std::string &path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

namespace {

// A store kept by an earlier run with --keep: the same count of messages, every file at
// least as long as written. A mailbox grown since is cut back to what was written, and
// counted in `cut`.
bool reuseStore(const std::string &manifest, uint64_t messages, StoreFiles &files, unsigned &cut) {
  std::ifstream in(manifest);
  uint64_t count = 0;
  if (!(in >> count >> files.bytes >> files.root) || count != messages)
    return false;
  files.messages = count;
  uint64_t size = 0;
  std::string path;
  while (in >> size >> path) {
    const uint64_t now = fileSize(path);
    if (now < size || (now > size && ::truncate(path.c_str(), static_cast<off_t>(size)) != 0))
      return false;
    cut += now > size;
    files.mailFiles.push_back(path);
  }
  return !files.mailFiles.empty();
}

} // namespace

PeerStore prepareStore(Client client, const char *kind, const char *label, Corpus corpus,
                       uint64_t messages, const std::string &dir, bool keep) {
  PeerStore store;
  store.home = dir + "/" + kind;
  const std::string manifest = store.home + "/manifest";
  unsigned cut = 0;
  if (keep && reuseStore(manifest, messages, store.files, cut)) {
    std::printf("\n%s: reusing the store of %llu messages that --keep left (%u grown mailbox "
                "cut back)\n",
                label, static_cast<unsigned long long>(messages), cut);
  } else {
    removeTree(store.home);
    StoreShape shape;
    shape.messageCount = messages;
    shape.minMessage = 1024;
    shape.maxMessage = corpus == Corpus::Real ? 20 * 1024 : 16 * 1024;
    shape.messagesPerMailbox = 1000;
    shape.corpus = corpus;
    const auto start = std::chrono::steady_clock::now();
    store.files = writeStore(client, store.home + "/mail", shape, 0x70656572ull);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("\n%s: written in %.1f s\n", label, seconds);
    std::ofstream out(manifest);
    out << store.files.messages << ' ' << store.files.bytes << ' ' << store.files.root << '\n';
    for (const std::string &path : store.files.mailFiles)
      out << fileSize(path) << ' ' << path << '\n';
  }
  if (corpus == Corpus::Real) {
    for (size_t rank : {50, 500, 3000}) {
      store.words.push_back(RealVocabulary::shared().word(rank - 1));
      store.wordNotes.push_back("rank " + std::to_string(rank));
    }
  } else {
    // MimeText's words come about equally often; these are in its German and English text.
    store.words = {"meeting", "rechnung", "quartal"};
    store.wordNotes = {"common", "common", "common"};
  }
  std::printf("%s: %zu mbox files, %.1f MB, %llu messages, in %s\n", label,
              store.files.mailFiles.size(), megabytes(store.files.bytes),
              static_cast<unsigned long long>(store.files.messages), store.files.root.c_str());

  store.registry = store.home + "/registry.reg";
  ::setenv("TUK_REGISTRY", store.registry.c_str(), 1);
  if (!SetRegValue(clientFormat(client).agentKey, "MailPath", CString(store.files.root.c_str()))) {
    std::fprintf(stderr, "peer_bench: cannot write %s\n", store.registry.c_str());
    std::exit(1);
  }
  return store;
}

bool StoreOptions::take(BenchArguments &arguments) {
  const std::string &arg = arguments.current();
  if (arg == "--messages")
    messages = std::strtoull(arguments.value().c_str(), nullptr, 10);
  else if (arg == "--dir")
    dir = arguments.value();
  else if (arg == "--keep")
    keep = true;
  else if (arg == "--mhhost")
    mhhost = arguments.value();
  else
    return false;
  return true;
}

void StoreOptions::settle(const char *bench, const std::string &self) {
  if (dir.empty()) {
    const char *tmp = std::getenv("TMPDIR");
    dir = std::string(tmp && *tmp ? tmp : "/tmp") + "/" + bench;
  }
  if (mhhost.empty())
    mhhost = directoryOf(self) + "/mhhost";
}
