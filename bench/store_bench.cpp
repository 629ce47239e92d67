// store_bench: writes a mail store of each client and measures, in one run and on the same
// warm files, `cat` of its mail files (the read limit), the agent's walk as a host enumerates,
// the walk with every object opened, read and its properties taken, and the reference host's
// index. Each row gives MB/s, messages/s, its share of cat's speed and its peak memory.
// Besides stores of plain text mail, a store of MIME-heavy mail (HTML alternatives,
// attachments, 8-bit charsets, encoded words) measures the host's reading of MIME.
#include "bench/AgentDriver.h"
#include "bench/BenchHost.h"
#include "bench/FileCache.h"
#include "bench/MappedRead.h"
#include "bench/ProcessRun.h"
#include "bench/QueryTimes.h"
#include "bench/StoreWriter.h"
#include "cmn/Registry.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

const char kUsage[] =
    "usage: store_bench [--size MB] [--messages N] [--mime N] [--clients LIST] [--repeat N]\n"
    "                   [--slow-repeat N] [--first-read agent|cat] [--dir DIR] [--keep]\n"
    "                   [--verify] [--mhhost PATH]\n"
    "  --size MB       the store of mixed messages (1 KB to 1 MB) per client; 0: none (256)\n"
    "  --messages N    the store of everyday messages (about 5 KB) per client; 0: none (100000)\n"
    "  --mime N        the store of MIME-heavy messages (HTML and text alternatives,\n"
    "                  attachments, 8-bit charsets, encoded words; 1 KB to 16 KB) per client;\n"
    "                  0: none (as many as --messages)\n"
    "  --clients LIST  eudora,internet,netscape,pegasus (all)\n"
    "  --repeat N      timed runs of cat, mmap and walk; the fastest counts (3)\n"
    "  --slow-repeat N timed runs of the rows that open every object, and mhhost's (1)\n"
    "  --first-read W  who reads a store first from disk, which decides the size of the\n"
    "                  pieces its pages are cached in: the agent's walk (2 MB pieces, as its\n"
    "                  mappings ask) or cat (the small pieces of read-ahead) (agent)\n"
    "  --dir DIR       where the stores are written (a new folder in $TMPDIR)\n"
    "  --keep          leave the stores behind\n"
    "  --verify        also print a digest of everything the entries gave, per store\n"
    "  --mhhost PATH   the reference host (mhhost beside this program)\n";

struct Options {
  uint64_t mixedMegabytes = 256;
  uint64_t everydayMessages = 100000;
  int64_t mimeMessages = -1; // as many as everydayMessages
  std::vector<Client> clients;
  int repeat = 3;
  int slowRepeat = 1;
  bool agentReadsFirst = true;
  std::string dir;
  bool keep = false;
  bool verify = false;
  std::string mhhost;
};

std::vector<Client> parseClients(const std::string &list, const BenchArguments &arguments) {
  std::vector<Client> clients;
  size_t begin = 0;
  while (begin <= list.size()) {
    const size_t comma = std::min(list.find(',', begin), list.size());
    const std::string name = list.substr(begin, comma - begin);
    bool known = false;
    for (const ClientFormat &format : clientFormats()) {
      if (name == format.name) {
        clients.push_back(format.client);
        known = true;
      }
    }
    if (!known)
      arguments.fail("unknown client: " + name);
    begin = comma + 1;
  }
  return clients;
}

Options parseOptions(int argc, char **argv) {
  Options options;
  BenchArguments arguments(argc, argv, "store_bench", kUsage);
  while (arguments.next()) {
    const std::string &arg = arguments.current();
    const auto value = [&arguments] { return arguments.value(); };
    if (arg == "--size")
      options.mixedMegabytes = std::strtoull(value().c_str(), nullptr, 10);
    else if (arg == "--messages")
      options.everydayMessages = std::strtoull(value().c_str(), nullptr, 10);
    else if (arg == "--mime")
      options.mimeMessages = static_cast<int64_t>(std::strtoull(value().c_str(), nullptr, 10));
    else if (arg == "--clients")
      options.clients = parseClients(value(), arguments);
    else if (arg == "--repeat")
      options.repeat = std::max(1, std::atoi(value().c_str()));
    else if (arg == "--slow-repeat")
      options.slowRepeat = std::max(1, std::atoi(value().c_str()));
    else if (arg == "--first-read") {
      const std::string who = value();
      if (who != "agent" && who != "cat")
        arguments.fail("--first-read takes agent or cat");
      options.agentReadsFirst = who == "agent";
    } else if (arg == "--dir")
      options.dir = value();
    else if (arg == "--keep")
      options.keep = true;
    else if (arg == "--verify")
      options.verify = true;
    else if (arg == "--mhhost")
      options.mhhost = value();
    else
      arguments.fail("unknown option: " + arg);
  }
  if (options.mimeMessages < 0)
    options.mimeMessages = static_cast<int64_t>(options.everydayMessages);
  if (options.clients.empty())
    for (const ClientFormat &format : clientFormats())
      options.clients.push_back(format.client);
  return options;
}

// The child's side: one walk in a fresh process, its totals on standard output; or, with
// "map", one pass through mappings of the files named.
int childMain(int argc, char **argv) {
  if (argc < 4)
    return 2;
  if (std::strcmp(argv[2], "map") == 0) {
    const std::vector<std::string> files(argv + 3, argv + argc);
    std::printf("0 0 0 %016llx\n", static_cast<unsigned long long>(readMapped(files)));
    return 0;
  }
  const WalkMode mode = std::strcmp(argv[2], "index") == 0 ? WalkMode::Index : WalkMode::Find;
  const bool withDigest = argc > 4 && std::strcmp(argv[4], "--digest") == 0;
  WalkTotals totals;
  std::string error;
  if (!walkStore(directoryOf(selfPath("store_bench")) + "/tuk_mhmail.so", argv[3], mode, withDigest,
                 totals, error)) {
    std::fprintf(stderr, "store_bench: %s\n", error.c_str());
    return 1;
  }
  std::printf("%llu %llu %llu %016llx\n", static_cast<unsigned long long>(totals.objects),
              static_cast<unsigned long long>(totals.recordBytes),
              static_cast<unsigned long long>(totals.bodyBytes),
              static_cast<unsigned long long>(totals.digest));
  return 0;
}

struct Store {
  std::string label;
  Client client;
  StoreFiles files;
  std::string registry;
  std::string database;
};

struct Row {
  std::string name;
  bool ran = false;
  bool failed = false;
  double seconds = 0;
  double cpuSeconds = 0;
  uint64_t peakAnon = 0;
  uint64_t peakResident = 0;
  uint64_t objects = 0;
  bool counted = false;

  void take(const ProcessRun &run) {
    if (!run.started || run.exitStatus != 0) {
      failed = true;
      return;
    }
    seconds = ran ? std::min(seconds, run.seconds) : run.seconds;
    cpuSeconds = ran ? std::min(cpuSeconds, run.cpuSeconds) : run.cpuSeconds;
    peakAnon = std::max(peakAnon, run.peakAnon);
    peakResident = std::max(peakResident, run.peakResident);
    ran = true;
  }
};

double megabytes(uint64_t bytes) {
  return static_cast<double>(bytes) / (1024.0 * 1024.0);
}

void printRow(const Row &row, const Store &store, const Row &cat) {
  if (row.failed) {
    std::printf("  %-24s failed\n", row.name.c_str());
    return;
  }
  const double mb = megabytes(store.files.bytes);
  const double messages = static_cast<double>(store.files.messages);
  std::printf("  %-24s %7.3f %7.3f %8.1f %9.0f %6.2f %6.2f %8.1f MB %8.1f MB", row.name.c_str(),
              row.seconds, row.cpuSeconds, mb / row.seconds, messages / row.seconds,
              cat.seconds / row.seconds, cat.cpuSeconds / row.cpuSeconds, megabytes(row.peakAnon),
              megabytes(row.peakResident));
  if (row.counted && row.objects != store.files.messages)
    std::printf("   (%llu objects found!)", static_cast<unsigned long long>(row.objects));
  std::printf("\n");
}

uint64_t objectsOf(const ProcessRun &run) {
  return std::strtoull(run.output.c_str(), nullptr, 10);
}

void removeDatabase(const std::string &path) {
  for (const char *suffix : {"", "-wal", "-shm", "-journal"})
    ::unlink((path + suffix).c_str());
}

void measure(const Store &store, const Options &options, const std::string &self) {
  std::printf("\n%s: %zu mail files, %.1f MB, %llu messages\n", store.label.c_str(),
              store.files.mailFiles.size(), megabytes(store.files.bytes),
              static_cast<unsigned long long>(store.files.messages));
  const std::string key = clientFormat(store.client).agentKey;
  const std::vector<std::string> registryEnv = {"TUK_REGISTRY=" + store.registry};
  std::vector<std::string> catArgs = {"/bin/cat"};
  catArgs.insert(catArgs.end(), store.files.mailFiles.begin(), store.files.mailFiles.end());
  const std::vector<std::string> hostArgs = {
      options.mhhost, "--client",     clientFormat(store.client).name,
      "--registry",   store.registry, "--db",
      store.database, "index"};
  const bool hostBuilt = isExecutable(options.mhhost);

  std::vector<std::string> mapArgs = {self, "--child", "map"};
  mapArgs.insert(mapArgs.end(), store.files.mailFiles.begin(), store.files.mailFiles.end());

  // The store was dropped from the cache when it was written: the first reader reads it
  // from disk and decides how its pages are cached for every run that follows.
  Row first{options.agentReadsFirst ? "walk, from disk" : "cat, from disk"};
  first.take(options.agentReadsFirst ? runProcess({self, "--child", "find", key}, registryEnv, true)
                                     : runProcess(catArgs, {}, false));

  Row cat{"cat"}, mapped{"mmap, one pass"}, walk{"walk (find first/next)"};
  Row index{"walk + open/read/props"};
  Row host{"mhhost index"}, again{"mhhost index, unchanged"};
  walk.counted = index.counted = true;
  for (int round = 0; round < options.repeat; ++round) {
    readThrough(store.files.mailFiles);
    cat.take(runProcess(catArgs, {}, false));
    readThrough(store.files.mailFiles);
    mapped.take(runProcess(mapArgs, {}, true));
    readThrough(store.files.mailFiles);
    ProcessRun run = runProcess({self, "--child", "find", key}, registryEnv, true);
    walk.take(run);
    walk.objects = objectsOf(run);
  }
  for (int round = 0; round < options.slowRepeat; ++round) {
    readThrough(store.files.mailFiles);
    const ProcessRun run = runProcess({self, "--child", "index", key}, registryEnv, true);
    index.take(run);
    index.objects = objectsOf(run);
    if (hostBuilt) {
      removeDatabase(store.database);
      readThrough(store.files.mailFiles);
      host.take(runProcess(hostArgs, {}, false));
      readThrough(store.files.mailFiles);
      again.take(runProcess(hostArgs, {}, false));
    }
  }
  std::printf("  %-24s %7s %7s %8s %9s %6s %6s %11s %11s\n", "run", "wall s", "cpu s", "MB/s",
              "msgs/s", "of cat", "(cpu)", "peak anon", "peak RSS");
  for (const Row *row : {&cat, &mapped, &walk, &index})
    printRow(*row, store, cat);
  if (hostBuilt) {
    printRow(host, store, cat);
    printRow(again, store, cat);
    measureQueries(options.mhhost, store.registry, store.database, clientFormat(store.client).name,
                   everydayQueryWords());
  } else {
    std::printf("  mhhost: not built\n");
  }
  printRow(first, store, cat);
  if (options.verify) {
    for (const char *mode : {"find", "index"}) {
      const ProcessRun run =
          runProcess({self, "--child", mode, key, "--digest"}, registryEnv, true);
      std::printf("  digest %-6s %s", mode, run.output.c_str());
    }
  }
  std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv) {
  if (argc > 1 && std::strcmp(argv[1], "--child") == 0)
    return childMain(argc, argv);
  Options options = parseOptions(argc, argv);
  const std::string self = selfPath("store_bench");
  if (options.mhhost.empty())
    options.mhhost = directoryOf(self) + "/mhhost";

  bool madeDir = false;
  if (options.dir.empty()) {
    const char *tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/store_bench.XXXXXX";
    if (!::mkdtemp(&pattern[0])) {
      std::perror("store_bench: mkdtemp");
      return 1;
    }
    options.dir = pattern;
    madeDir = true;
  }

  std::printf("store_bench: %ld cores, load average %s\n", ::sysconf(_SC_NPROCESSORS_ONLN),
              loadAverage().c_str());
  std::printf("stores in %s; each row the fastest of %d runs (%d for the rows that open every "
              "object), each run right after a read of its files\n",
              options.dir.c_str(), options.repeat, options.slowRepeat);
  std::printf("each store is dropped from the cache when written and read first from disk by "
              "%s\n",
              options.agentReadsFirst ? "the agent's walk" : "cat");
  std::printf("MB/s and msgs/s by the wall clock; \"of cat\": cat's time over the row's, by the "
              "wall clock and by processor time\n");
  const char *zone = std::getenv("TZ");
  std::printf("TZ %s%s\n", zone ? "is " : "is not set",
              zone ? zone : " (mktime then reads /etc/localtime's status on every call)");

  for (Client client : options.clients) {
    const ClientFormat &format = clientFormat(client);
    struct Shape {
      const char *kind;
      StoreShape shape;
      std::string label;
    };
    std::vector<Shape> shapes;
    if (options.mixedMegabytes) {
      StoreShape mixed;
      mixed.targetBytes = options.mixedMegabytes << 20;
      shapes.push_back({"mixed", mixed, std::string(format.name) + ", mixed 1 KB to 1 MB"});
    }
    if (options.everydayMessages) {
      StoreShape everyday;
      everyday.messageCount = options.everydayMessages;
      everyday.minMessage = 1024;
      everyday.maxMessage = 16 * 1024;
      everyday.mailboxes = 16;
      shapes.push_back(
          {"everyday", everyday, std::string(format.name) + ", everyday (about 5 KB)"});
    }
    if (options.mimeMessages > 0) {
      StoreShape mime;
      mime.messageCount = static_cast<uint64_t>(options.mimeMessages);
      mime.minMessage = 1024;
      mime.maxMessage = 16 * 1024;
      mime.mailboxes = 16;
      mime.corpus = Corpus::Mime;
      shapes.push_back({"mime", mime, std::string(format.name) + ", MIME-heavy (about 5 KB)"});
    }
    for (const Shape &shape : shapes) {
      Store store;
      store.label = shape.label;
      store.client = client;
      const std::string base = options.dir + "/" + format.name + "-" + shape.kind;
      const auto start = std::chrono::steady_clock::now();
      store.files = writeStore(client, base, shape.shape, 0x6D61696Cull + static_cast<int>(client));
      const double written =
          std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      // As a person's store is met: read from disk, not just written.
      dropFromCache(store.files.mailFiles);
      store.registry = base + ".reg";
      store.database = base + ".db";
      ::setenv("TUK_REGISTRY", store.registry.c_str(), 1);
      if (!SetRegValue(format.agentKey, "MailPath", CString(store.files.root.c_str()))) {
        std::fprintf(stderr, "store_bench: cannot write %s\n", store.registry.c_str());
        return 1;
      }
      std::printf("\n(written in %.1f s)", written);
      measure(store, options, self);
      if (!options.keep)
        removeTree(store.files.root);
    }
  }
  std::printf("\nload average at the end: %s\n", loadAverage().c_str());
  if (madeDir && !options.keep)
    removeTree(options.dir);
  return 0;
}
