// The search page's index runs and their events.
#include "host/IndexRunner.h"

#include "host/IndexRun.h"
#include "host/JsonText.h"
#include "host/SearchRequest.h"

IndexRunner::IndexRunner(const HostSettings &settings) : settings_(settings) {
  settings_.agentKey.clear(); // every store, as mhhost index without --client
}

IndexRunner::~IndexRunner() {
  if (thread_.joinable())
    thread_.join();
}

bool IndexRunner::start() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (running_)
    return false;
  running_ = true;
  ++run_;
  events_.clear();
  if (thread_.joinable())
    thread_.join(); // the last run's, which has ended
  thread_ = std::thread([this] { run(); });
  return true;
}

void IndexRunner::run() {
  const auto start = std::chrono::steady_clock::now();
  uint64_t stores = 0, messages = 0, added = 0;
  IndexListener listener;
  listener.reading = [&](const std::string &agentKey, uint64_t done, uint64_t total,
                         uint64_t added) {
    publish("reading", jsonText({{"store", storeName(agentKey)},
                                 {"bytes", done},
                                 {"totalBytes", total},
                                 {"new", added}}));
  };
  listener.storeIndexed = [&](const std::string &agentKey, const IndexSummary &summary) {
    const uint64_t held = summary.added + summary.unchanged + summary.moved;
    ++stores;
    messages += held;
    added += summary.added;
    publish("progress", jsonText({{"store", storeName(agentKey)},
                                  {"mailboxes", summary.mailboxesRead + summary.mailboxesUnchanged},
                                  {"messages", held},
                                  {"new", summary.added}}));
  };
  const int status = updateStores(settings_, false, listener);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (status == 0)
    publish(
        "done",
        jsonText(
            {{"stores", stores}, {"messages", messages}, {"new", added}, {"seconds", seconds}}));
  else
    publish("error", jsonText({{"error", "the index run failed; the server's output says why"}}));
  std::lock_guard<std::mutex> lock(mutex_);
  running_ = false;
}

void IndexRunner::publish(const char *event, const std::string &data) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    events_.push_back(std::string("event: ") + event + "\ndata: " + data + "\n\n");
  }
  changed_.notify_all();
}

std::string IndexRunner::next(Cursor &cursor, std::chrono::seconds wait) {
  std::unique_lock<std::mutex> lock(mutex_);
  if (!cursor.started) {
    cursor.started = true;
    cursor.run = run_;
    cursor.seen = running_ ? 0 : events_.size();
    if (!running_)
      return "event: idle\ndata: {}\n\n";
  }
  changed_.wait_for(lock, wait, [&] { return cursor.run != run_ || events_.size() > cursor.seen; });
  if (cursor.run != run_) {
    cursor.run = run_;
    cursor.seen = 0;
  }
  std::string text;
  for (; cursor.seen < events_.size(); ++cursor.seen)
    text += events_[cursor.seen];
  return text.empty() ? ": still here\n\n" : text;
}
