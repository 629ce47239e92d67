// serve_bench: `mhhost serve` under load. A store of real-shaped mail is written and indexed
// once, then the server takes searches from many clients at once, each a one-word query of a
// word drawn by its rank in the corpus. Reports the latency of the searches (p50, p90, p99,
// the slowest), the errors, and the server's resident memory as the run goes: it should stay
// flat.
#include "bench/BenchHost.h"
#include "bench/BenchStore.h"
#include "bench/FileCache.h"
#include "bench/ProcessRun.h"
#include "bench/RealVocabulary.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <httplib.h>
#include <mutex>
#include <random>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char **environ;

namespace {

const char kUsage[] =
    "usage: serve_bench [--messages N] [--clients C] [--searches S] [--sort ORDER]\n"
    "                   [--dir DIR] [--keep] [--mhhost PATH]\n"
    "  --messages N   the store, in mailboxes of 1,000 (100000)\n"
    "  --clients C    clients searching at once (50)\n"
    "  --searches S   searches in all (2000)\n"
    "  --sort ORDER   newest, oldest or relevance (newest, as the page first asks)\n"
    "  --dir DIR      where the store and index go ($TMPDIR/serve_bench)\n"
    "  --keep         leave them there; a later run with --keep reuses them\n"
    "  --mhhost PATH  the reference host (mhhost beside this program)\n";

struct Options {
  StoreOptions store;
  int clients = 50;
  int searches = 2000;
  std::string sort = "newest";
};

Options parseOptions(int argc, char **argv) {
  Options options;
  BenchArguments arguments(argc, argv, "serve_bench", kUsage);
  while (arguments.next()) {
    const std::string &arg = arguments.current();
    if (options.store.take(arguments))
      continue;
    if (arg == "--clients")
      options.clients = std::max(1, std::atoi(arguments.value().c_str()));
    else if (arg == "--sort")
      options.sort = arguments.value();
    else if (arg == "--searches")
      options.searches = std::max(1, std::atoi(arguments.value().c_str()));
    else
      arguments.fail("unknown option: " + arg);
  }
  return options;
}

// The server, started with its output read until it names its address; stopped with it.
class Server {
public:
  explicit Server(const std::vector<std::string> &argv) {
    int out[2];
    if (::pipe(out) != 0)
      return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    std::vector<char *> args;
    for (const std::string &arg : argv)
      args.push_back(const_cast<char *>(arg.c_str()));
    args.push_back(nullptr);
    if (posix_spawn(&pid_, args[0], &actions, nullptr, args.data(), environ) != 0)
      pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    // The first line that holds "http://" is the address, token and all.
    std::string line;
    char ch = 0;
    while (pid_ > 0 && ::read(out[0], &ch, 1) == 1) {
      if (ch != '\n') {
        line += ch;
        continue;
      }
      if (const size_t at = line.find("http://"); at != std::string::npos) {
        url_ = line.substr(at);
        break;
      }
      line.clear();
    }
    output_ = out[0];
  }
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;
  ~Server() {
    if (pid_ > 0) {
      ::kill(pid_, SIGTERM);
      ::waitpid(pid_, nullptr, 0);
    }
    if (output_ >= 0)
      ::close(output_);
  }
  const std::string &url() const { return url_; }
  pid_t pid() const { return pid_; }

private:
  pid_t pid_ = -1;
  int output_ = -1;
  std::string url_;
};

// The server's resident memory now, in bytes, all of it and its own (without the pages of
// files it maps, the index's among them, which are the page cache's and shared); zeros when
// it can't be read.
struct Resident {
  uint64_t all = 0, own = 0;
};

Resident residentBytes(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  std::string key;
  Resident resident;
  while (status >> key) {
    uint64_t kilobytes = 0;
    if (key == "VmRSS:" && status >> kilobytes)
      resident.all = kilobytes * 1024;
    else if (key == "RssAnon:" && status >> kilobytes)
      resident.own = kilobytes * 1024;
    status.ignore(1 << 16, '\n');
  }
  return resident;
}

// Milliseconds a fixed loop takes on one processor: this machine's processors are shared
// with others, and a run slowed by them says so.
double fixedLoopMilliseconds() {
  const auto begun = std::chrono::steady_clock::now();
  volatile uint64_t sum = 0;
  for (uint64_t i = 0; i < 200000000; ++i)
    sum = sum + i;
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begun)
      .count();
}

double percentile(const std::vector<double> &sorted, double fraction) {
  if (sorted.empty())
    return 0;
  const size_t at = static_cast<size_t>(fraction * static_cast<double>(sorted.size() - 1) + 0.5);
  return sorted[std::min(at, sorted.size() - 1)];
}

} // namespace

int main(int argc, char **argv) {
  Options options = parseOptions(argc, argv);
  options.store.settle("serve_bench", selfPath(argv[0]));
  const StoreOptions &given = options.store;
  const Client client = Client::Netscape;
  PeerStore store = prepareStore(client, "real", "Real-shaped mail", Corpus::Real, given.messages,
                                 given.dir, given.keep);
  const std::string database = store.home + "/mhhost.db";
  const std::vector<std::string> common = {given.mhhost, "--client",     clientFormat(client).name,
                                           "--registry", store.registry, "--db",
                                           database};
  std::vector<std::string> index = common;
  index.push_back("index");
  const ProcessRun indexed = runProcess(index, {}, false);
  if (!indexed.started || indexed.exitStatus != 0) {
    std::fprintf(stderr, "serve_bench: mhhost index failed\n");
    return 1;
  }
  std::printf("indexed %llu messages in %.1f s\n",
              static_cast<unsigned long long>(store.files.messages), indexed.seconds);

  // This machine drops pages left unused for about a minute: the index and the mail are read
  // once right before the run, as a server that has been answering has them cached.
  std::vector<std::string> cached = store.files.mailFiles;
  cached.push_back(database);
  std::printf("read %.1f MB into the page cache\n", megabytes(readThrough(cached)));
  std::vector<std::string> serve = common;
  serve.insert(serve.end(), {"serve", "--port", "0"});
  Server server(serve);
  if (server.url().empty()) {
    std::fprintf(stderr, "serve_bench: mhhost serve named no address\n");
    return 1;
  }
  // http://HOST:PORT/?token=T
  const std::string url = server.url();
  const size_t pathAt = url.find('/', 7);
  const std::string origin = url.substr(0, pathAt);
  const std::string token = url.substr(url.find("token=") + 6);

  const RealVocabulary &vocabulary = RealVocabulary::shared();
  std::atomic<int> next{0};
  std::atomic<int> errors{0};
  std::mutex timesLock;
  std::vector<double> milliseconds;
  std::atomic<bool> running{true};
  // Memory is flat when what the server holds once a tenth of the searches are done is what
  // it holds at the end.
  Resident firstResident, tenthResident, peakResident, lastResident;
  std::thread sampler([&] {
    while (running.load()) {
      const Resident now = residentBytes(server.pid());
      firstResident = firstResident.all ? firstResident : now;
      if (!tenthResident.all && next.load() >= options.searches / 10)
        tenthResident = now;
      peakResident = {std::max(peakResident.all, now.all), std::max(peakResident.own, now.own)};
      lastResident = now;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  });
  const double loopBefore = fixedLoopMilliseconds();
  const auto start = std::chrono::steady_clock::now();
  std::vector<std::thread> clients;
  for (int c = 0; c < options.clients; ++c) {
    clients.emplace_back([&, c] {
      httplib::Client http(origin);
      http.set_read_timeout(30, 0);
      std::mt19937 random(static_cast<unsigned>(c) * 7919u + 1u);
      // Words of every frequency: most searches are for middling words, some for common ones.
      std::uniform_int_distribution<size_t> rank(20, std::min<size_t>(vocabulary.size(), 5000) - 1);
      std::vector<double> mine;
      while (next.fetch_add(1) < options.searches) {
        const std::string path = "/api/search?limit=20&sort=" + options.sort + "&token=" + token +
                                 "&q=" +
                                 httplib::detail::encode_query_param(
                                     // Quoted: "and", "or" and "not" are words here.
                                     '"' + vocabulary.word(rank(random)) + '"');
        const auto begun = std::chrono::steady_clock::now();
        const auto answer = http.Get(path);
        mine.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begun)
                .count());
        if (!answer || answer->status != 200) {
          if (errors.fetch_add(1) == 0)
            std::fprintf(stderr, "serve_bench: the first error: %s %s\n", path.c_str(),
                         answer ? (std::to_string(answer->status) + " " + answer->body).c_str()
                                : httplib::to_string(answer.error()).c_str());
        }
      }
      const std::lock_guard<std::mutex> hold(timesLock);
      milliseconds.insert(milliseconds.end(), mine.begin(), mine.end());
    });
  }
  for (std::thread &thread : clients)
    thread.join();
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  running = false;
  sampler.join();
  const double loopAfter = fixedLoopMilliseconds();

  std::sort(milliseconds.begin(), milliseconds.end());
  std::printf("%d clients, %zu searches in %.2f s (%.0f/s), %d errors\n", options.clients,
              milliseconds.size(), seconds, static_cast<double>(milliseconds.size()) / seconds,
              errors.load());
  std::printf("latency ms: p50 %.1f  p90 %.1f  p99 %.1f  max %.1f   (target p99 < 100)\n",
              percentile(milliseconds, 0.50), percentile(milliseconds, 0.90),
              percentile(milliseconds, 0.99), milliseconds.empty() ? 0.0 : milliseconds.back());
  std::printf("a fixed loop on one processor: %.0f ms before the run, %.0f ms after (it takes "
              "longer while other programs share the processors)\n",
              loopBefore, loopAfter);
  std::printf("server resident MB: first %.1f  at a tenth %.1f  peak %.1f  last %.1f\n",
              megabytes(firstResident.all), megabytes(tenthResident.all),
              megabytes(peakResident.all), megabytes(lastResident.all));
  std::printf("  of it its own, not the mapped index: first %.1f  at a tenth %.1f  peak %.1f  "
              "last %.1f\n",
              megabytes(firstResident.own), megabytes(tenthResident.own),
              megabytes(peakResident.own), megabytes(lastResident.own));
  return errors.load() == 0 ? 0 : 1;
}
