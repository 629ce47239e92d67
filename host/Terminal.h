// The person at the terminal: whether there is one, a progress bar on standard error, and
// questions answered on standard input.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

bool standardInputIsTerminal();
bool standardOutputIsTerminal();
bool standardErrorIsTerminal();

// A one-line bar on standard error, drawn only when standard error is a terminal, not
// before a quarter of a second has passed and at most ten times a second.
class ProgressBar {
public:
  // What is told the bar, as it is drawn, goes to `watcher` too, whether drawn or not.
  using Watcher = std::function<void(uint64_t done, uint64_t total, uint64_t count)>;
  explicit ProgressBar(bool enabled, Watcher watcher = nullptr);
  ProgressBar(const ProgressBar &) = delete;
  ProgressBar &operator=(const ProgressBar &) = delete;
  ~ProgressBar() { finish(); }

  // `done` of `total` bytes (total 0: unknown), with a count and a word for what is counted.
  void update(uint64_t done, uint64_t total, uint64_t count, const char *what);
  // Clears the bar's line.
  void finish();

private:
  bool enabled_;
  bool drawn_ = false;
  Watcher watcher_;
  std::chrono::steady_clock::time_point lastWatched_;
  std::chrono::steady_clock::time_point start_, lastDraw_;
};

// Writes `prompt` to standard error and reads one line from standard input. False at the end
// of the input.
bool askLine(const std::string &prompt, std::string &answer);
