// The search page's index runs: one at a time, on a thread of their own, so that the agent is
// only ever called from that thread; their progress goes to every listener as server-sent
// events.
#pragma once

#include "host/HostSettings.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class IndexRunner {
public:
  explicit IndexRunner(const HostSettings &settings);
  IndexRunner(const IndexRunner &) = delete;
  IndexRunner &operator=(const IndexRunner &) = delete;
  ~IndexRunner();

  // Starts a run of every store; false while one is under way.
  bool start();

  // A listener's place in the events; a new one starts with the run under way, or `idle`.
  struct Cursor {
    bool started = false;
    uint64_t run = 0;
    size_t seen = 0;
  };
  // The events past `cursor`, as event-stream text; waits up to `wait` for one, and gives a
  // comment when none came, which keeps the connection open.
  std::string next(Cursor &cursor, std::chrono::seconds wait);

private:
  void run();
  void publish(const char *event, const std::string &data);

  HostSettings settings_;
  std::mutex mutex_;
  std::condition_variable changed_;
  // Those of the last run only, so that a server that runs for weeks does not keep them all;
  // a listener still behind on a run when the next starts misses the rest of it.
  std::vector<std::string> events_;
  uint64_t run_ = 0; // the last run's number, from 1
  bool running_ = false;
  std::thread thread_;
};
