// peer_bench: the reference host beside a peer indexer, mairix, on one Netscape store of mail
// shaped like a person's (RealCorpus) and, when asked, of MIME-heavy mail. Each tool, on warm
// files and taking turns at going first: a first index, a rerun with nothing changed and
// one-word searches of a common, a middling and a rare word, with its peak memory and the
// size of its index. Then a mailbox grown by a thousand messages, indexed again by both,
// beside the agent's bare walk of the whole store.
#include "bench/BenchHost.h"
#include "bench/BenchStore.h"
#include "bench/FileCache.h"
#include "bench/ProcessRun.h"
#include "bench/QueryTimes.h"
#include "bench/RealCorpus.h"
#include "bench/RealVocabulary.h"
#include "bench/StoreWriter.h"
#include "cmn/Registry.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char kUsage[] =
    "usage: peer_bench [--messages N] [--mime N] [--repeat R] [--dir DIR] [--keep]\n"
    "                  [--mhhost PATH] [--skip-mairix]\n"
    "  --messages N   the store of real-shaped mail, in mailboxes of 1,000 (100000)\n"
    "  --mime N       also a store of N MIME-heavy messages (0)\n"
    "  --repeat R     rounds of each tool's runs; medians are reported (3)\n"
    "  --dir DIR      where the stores and indexes go ($TMPDIR/peer_bench)\n"
    "  --keep         leave them there; a later run with --keep and the same count reuses\n"
    "                 a store (cutting a grown mailbox back)\n"
    "  --mhhost PATH  the reference host (mhhost beside this program)\n"
    "  --skip-mairix  measure mhhost alone\n";

constexpr unsigned kGrowth = 1000;
constexpr Client kClient = Client::Netscape;

struct Options {
  StoreOptions store;
  uint64_t mimeMessages = 0;
  int repeat = 3;
  bool skipMairix = false;
};

Options parseOptions(int argc, char **argv) {
  Options options;
  BenchArguments arguments(argc, argv, "peer_bench", kUsage);
  while (arguments.next()) {
    const std::string &arg = arguments.current();
    const auto value = [&arguments] { return arguments.value(); };
    if (options.store.take(arguments))
      continue;
    if (arg == "--mime")
      options.mimeMessages = std::strtoull(value().c_str(), nullptr, 10);
    else if (arg == "--repeat")
      options.repeat = std::max(1, std::atoi(value().c_str()));
    else if (arg == "--skip-mairix")
      options.skipMairix = true;
    else
      arguments.fail("unknown option: " + arg);
  }
  if (options.store.messages == 0)
    arguments.fail("--messages must be more than 0");
  return options;
}

double median(std::vector<double> values) {
  if (values.empty())
    return 0;
  std::sort(values.begin(), values.end());
  const size_t middle = values.size() / 2;
  return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::string findOnPath(const std::string &name) {
  const char *path = std::getenv("PATH");
  std::string rest = path ? path : "/usr/bin:/bin";
  for (size_t begin = 0; begin <= rest.size();) {
    const size_t colon = std::min(rest.find(':', begin), rest.size());
    const std::string candidate = rest.substr(begin, colon - begin) + "/" + name;
    if (colon > begin && isExecutable(candidate))
      return candidate;
    begin = colon + 1;
  }
  return {};
}

std::string firstLine(const std::string &text) {
  return text.substr(0, text.find('\n'));
}

// mairix's settings: every mail file named, relative to the base (a recursive "..." entry
// would take the .snm files beside them for mailboxes too).
std::string writeMairixSettings(const PeerStore &store) {
  const std::string path = store.home + "/mairixrc";
  std::ofstream out(path);
  out << "base=" << store.files.root << '\n';
  for (const std::string &file : store.files.mailFiles)
    out << "mbox=" << file.substr(store.files.root.size() + 1) << '\n';
  out << "database=" << store.home << "/mairix.db\n"
      << "mfolder=" << store.home << "/mairix-results\n"
      << "mformat=mbox\n";
  return path;
}

struct Tool {
  std::string name;
  std::vector<std::string> index;  // indexes the store, from where the index left off
  std::vector<std::string> search; // and a word: the newest hits, as a person asks
  std::vector<std::string> count;  // and a word: the number of hits, or a line for each
  bool countIsNumber = false;
  std::string database;
  std::vector<std::string> siblings;   // beside the database, removed with it
  std::vector<std::string> sizedFiles; // of the database and its siblings, the index's size

  std::vector<double> firstSeconds, rerunSeconds, searchMilliseconds;
  std::vector<std::vector<double>> wordMilliseconds;
  std::vector<uint64_t> hits;
  uint64_t peakResident = 0, peakAnon = 0, indexBytes = 0;
  bool failed = false;
};

Tool mhhostTool(const std::string &mhhost, const PeerStore &store) {
  Tool tool;
  tool.name = "mhhost";
  tool.database = store.home + "/mhhost.db";
  const std::vector<std::string> common = {mhhost,       "--client",     clientFormat(kClient).name,
                                           "--registry", store.registry, "--db",
                                           tool.database};
  tool.index = tool.search = tool.count = common;
  tool.index.push_back("index");
  tool.search.insert(tool.search.end(), {"search", "--limit", "20"});
  tool.count.insert(tool.count.end(), {"search", "--count"});
  tool.countIsNumber = true;
  tool.siblings = {"-wal", "-shm", "-journal", ".lock"};
  tool.sizedFiles = {"", "-wal"};
  return tool;
}

Tool mairixTool(const std::string &mairix, const PeerStore &store) {
  Tool tool;
  tool.name = "mairix";
  const std::string settings = writeMairixSettings(store);
  tool.database = store.home + "/mairix.db";
  tool.index = {mairix, "-f", settings};
  // A bare word is looked for in the body and the major headers, as mhhost's is; -r lists
  // the matches' paths instead of copying them into a results folder.
  tool.search = tool.count = {mairix, "-f", settings, "-r"};
  tool.siblings = {".lock"};
  tool.sizedFiles = {""};
  return tool;
}

void removeIndex(const Tool &tool) {
  ::unlink(tool.database.c_str());
  for (const std::string &sibling : tool.siblings)
    ::unlink((tool.database + sibling).c_str());
}

bool succeeded(Tool &tool, const ProcessRun &run, const char *what) {
  // mairix ends a search that finds nothing with 1.
  if (run.started && (run.exitStatus == 0 || (run.exitStatus == 1 && tool.name == "mairix")))
    return true;
  std::fprintf(stderr, "peer_bench: %s %s failed (exit status %d)\n", tool.name.c_str(), what,
               run.exitStatus);
  tool.failed = true;
  return false;
}

// The files are read once right before each timed index run: both tools meet them warm.
ProcessRun timedIndex(Tool &tool, const PeerStore &store) {
  readThrough(store.files.mailFiles);
  ProcessRun run = runProcess(tool.index, {}, false);
  succeeded(tool, run, "index");
  return run;
}

uint64_t countHits(Tool &tool, const std::string &word) {
  std::vector<std::string> argv = tool.count;
  argv.push_back(word);
  const ProcessRun run = runProcess(argv, {}, true);
  if (!succeeded(tool, run, "search"))
    return 0;
  if (tool.countIsNumber)
    return std::strtoull(run.output.c_str(), nullptr, 10);
  return static_cast<uint64_t>(std::count(run.output.begin(), run.output.end(), '\n'));
}

void runRound(Tool &tool, const PeerStore &store, bool firstRound) {
  removeIndex(tool);
  const ProcessRun first = timedIndex(tool, store);
  const ProcessRun rerun = timedIndex(tool, store);
  tool.firstSeconds.push_back(first.seconds);
  tool.rerunSeconds.push_back(rerun.seconds);
  tool.peakResident = std::max(tool.peakResident, first.peakResident);
  tool.peakAnon = std::max(tool.peakAnon, first.peakAnon);
  tool.indexBytes = 0;
  for (const std::string &suffix : tool.sizedFiles)
    tool.indexBytes += fileSize(tool.database + suffix);
  tool.wordMilliseconds.resize(store.words.size());
  std::string searches;
  for (size_t i = 0; i < store.words.size(); ++i) {
    std::vector<std::string> argv = tool.search;
    argv.push_back(store.words[i]);
    const ProcessRun run = runProcess(argv, {}, true);
    succeeded(tool, run, "search");
    tool.wordMilliseconds[i].push_back(run.seconds * 1000);
    tool.searchMilliseconds.push_back(run.seconds * 1000);
    if (firstRound)
      tool.hits.push_back(countHits(tool, store.words[i]));
    char text[32];
    std::snprintf(text, sizeof text, "%s%.1f", i ? " / " : "", run.seconds * 1000);
    searches += text;
  }
  std::printf("  %-7s index %7.2f s, rerun %6.3f s, searches %s ms\n", tool.name.c_str(),
              first.seconds, rerun.seconds, searches.c_str());
  std::fflush(stdout);
}

void printSummary(const std::vector<Tool *> &tools, const PeerStore &store) {
  const double messages = static_cast<double>(store.files.messages);
  std::printf("\n  medians of %zu round(s); peaks of the first index runs\n",
              tools.front()->firstSeconds.size());
  std::printf("  %-7s %9s %8s %7s %9s %10s %10s %10s %10s %8s\n", "", "index s", "msgs/s", "MB/s",
              "rerun s", "search ms", "peak RSS", "peak anon", "index", "of mail");
  for (const Tool *tool : tools) {
    const double first = median(tool->firstSeconds);
    std::printf("  %-7s %9.2f %8.0f %7.1f %9.3f %10.1f %7.1f MB %7.1f MB %7.1f MB %8.3f%s\n",
                tool->name.c_str(), first, messages / first, megabytes(store.files.bytes) / first,
                median(tool->rerunSeconds), median(tool->searchMilliseconds),
                megabytes(tool->peakResident), megabytes(tool->peakAnon),
                megabytes(tool->indexBytes),
                static_cast<double>(tool->indexBytes) / static_cast<double>(store.files.bytes),
                tool->failed ? "  (a run failed)" : "");
  }
  if (tools.size() == 2) {
    const Tool &mairix = *tools[0], &mhhost = *tools[1];
    std::printf("  mhhost/mairix: messages/s %.2f, index size %.2f\n",
                median(mairix.firstSeconds) / median(mhhost.firstSeconds),
                static_cast<double>(mhhost.indexBytes) /
                    static_cast<double>(std::max<uint64_t>(mairix.indexBytes, 1)));
  }
  std::printf("\n  %-14s %-11s", "word", "");
  for (const Tool *tool : tools)
    std::printf(" %8s hits %9s", tool->name.c_str(), "ms");
  std::printf("\n");
  for (size_t i = 0; i < store.words.size(); ++i) {
    std::printf("  %-14s %-11s", store.words[i].c_str(), store.wordNotes[i].c_str());
    for (const Tool *tool : tools)
      std::printf(" %13llu %9.1f",
                  static_cast<unsigned long long>(i < tool->hits.size() ? tool->hits[i] : 0),
                  median(tool->wordMilliseconds[i]));
    std::printf("\n");
  }
  std::fflush(stdout);
}

// New mail at the end of the first mailbox, dated after everything in the store, as a
// client appends it.
void growMailbox(PeerStore &store) {
  RealCorpus corpus(0x67726F77ull, clientFormat(kClient).eol, RealCorpus::kLastDate, 3600);
  std::string chunk, message;
  for (unsigned i = 0; i < kGrowth; ++i) {
    message.clear();
    corpus.appendMessage(message, corpus.nextSize(1024, 20 * 1024));
    appendFramed(kClient, chunk, message, false);
  }
  const std::string &path = store.files.mailFiles.front();
  std::ofstream out(path, std::ios::app | std::ios::binary);
  out.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
  store.files.bytes += chunk.size();
  store.files.messages += kGrowth;
  std::printf("\ngrown mailbox: %u messages (%.1f MB) appended to %s\n", kGrowth,
              megabytes(chunk.size()), path.substr(store.files.root.size() + 1).c_str());
}

void measureGrowth(PeerStore &store, const std::vector<Tool *> &tools, const std::string &self) {
  growMailbox(store);
  for (Tool *tool : tools) {
    const ProcessRun run = timedIndex(*tool, store);
    std::printf("  %-7s %-24s %7.3f s, peak anon %.1f MB\n", tool->name.c_str(),
                "index after the growth", run.seconds, megabytes(run.peakAnon));
    if (tool->name != "mhhost")
      continue;
    // The agent's bare walk of the whole store, which every index run starts with.
    const std::string storeBench = directoryOf(self) + "/store_bench";
    readThrough(store.files.mailFiles);
    const ProcessRun walk =
        runProcess({storeBench, "--child", "find", clientFormat(kClient).agentKey},
                   {"TUK_REGISTRY=" + store.registry}, true);
    if (!walk.started || walk.exitStatus != 0) {
      std::printf("  walk: %s --child find failed\n", storeBench.c_str());
      continue;
    }
    const uint64_t found = std::strtoull(walk.output.c_str(), nullptr, 10);
    std::printf("  %-7s %-24s %7.3f s, %llu messages%s\n", "agent", "walk of the whole store",
                walk.seconds, static_cast<unsigned long long>(found),
                found == store.files.messages ? "" : " (not all of them!)");
  }
  std::fflush(stdout);
}

// Words as people search for them: neither the commonest nor the rarest, ranks 30 to 4,000
// spread evenly over the logarithm.
QueryWords realQueryWords() {
  QueryWords words{{}, "2010", "martin", "Archive"};
  for (double rank = 30; rank < 4000; rank *= 1.38)
    words.words.push_back(RealVocabulary::shared().word(static_cast<size_t>(rank)));
  return words;
}

void measure(PeerStore &store, const std::vector<Tool *> &tools, const Options &options,
             const std::string &self, bool grow) {
  std::printf("words searched:");
  for (size_t i = 0; i < store.words.size(); ++i)
    std::printf(" %s (%s)", store.words[i].c_str(), store.wordNotes[i].c_str());
  std::printf("\n");
  for (int round = 0; round < options.repeat; ++round) {
    std::printf("round %d\n", round + 1);
    for (size_t i = 0; i < tools.size(); ++i)
      runRound(*tools[round % 2 ? tools.size() - 1 - i : i], store, round == 0);
  }
  printSummary(tools, store);
  for (const Tool *tool : tools)
    if (tool->name == "mhhost" && grow)
      measureQueries(options.store.mhhost, store.registry, tool->database,
                     clientFormat(kClient).name, realQueryWords());
  if (grow)
    measureGrowth(store, tools, self);
}

} // namespace

int main(int argc, char **argv) {
  Options options = parseOptions(argc, argv);
  const std::string self = selfPath("peer_bench");
  options.store.settle("peer_bench", self);
  if (!isExecutable(options.store.mhhost)) {
    std::fprintf(stderr, "peer_bench: no mhhost at %s (build it, or name it with --mhhost)\n",
                 options.store.mhhost.c_str());
    return 1;
  }
  const std::string mairix = options.skipMairix ? std::string() : findOnPath("mairix");

  std::printf("peer_bench: %ld cores, load average %s\n", ::sysconf(_SC_NPROCESSORS_ONLN),
              loadAverage().c_str());
  std::printf("mhhost: %s (%s)\n", options.store.mhhost.c_str(),
              firstLine(runProcess({options.store.mhhost, "--version"}, {}, true).output).c_str());
  if (!mairix.empty())
    std::printf("mairix: %s (%s)\n", mairix.c_str(),
                firstLine(runProcess({mairix, "-V"}, {}, true).output).c_str());
  else if (options.skipMairix)
    std::printf("mairix: left out (--skip-mairix)\n");
  else
    std::printf("mairix: not found on PATH (apt-get install mairix); mhhost alone\n");
  std::printf("stores and indexes in %s; %d round(s), the tools taking turns at going first; "
              "the mail files read right before each index run\n",
              options.store.dir.c_str(), options.repeat);
  std::printf("searches: mhhost search --limit 20 WORD (newest first, a page with snippets); "
              "mairix -r WORD (every match's path); both look in the body and the major "
              "headers\n");

  struct Kind {
    const char *name, *label;
    Corpus corpus;
    uint64_t messages;
  };
  std::vector<Kind> kinds = {{"real", "real-shaped store", Corpus::Real, options.store.messages}};
  if (options.mimeMessages)
    kinds.push_back({"mime", "MIME-heavy store", Corpus::Mime, options.mimeMessages});
  for (const Kind &kind : kinds) {
    PeerStore store = prepareStore(kClient, kind.name, kind.label, kind.corpus, kind.messages,
                                   options.store.dir, options.store.keep);
    std::vector<Tool> owned;
    if (!mairix.empty())
      owned.push_back(mairixTool(mairix, store));
    owned.push_back(mhhostTool(options.store.mhhost, store));
    std::vector<Tool *> tools;
    for (Tool &tool : owned)
      tools.push_back(&tool);
    measure(store, tools, options, self, kind.corpus == Corpus::Real);
    if (!options.store.keep)
      removeTree(store.home);
  }
  std::printf("\nload average at the end: %s\n", loadAverage().c_str());
  if (!options.store.keep)
    ::rmdir(options.store.dir.c_str());
  return 0;
}
