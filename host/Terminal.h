// The person at the terminal: whether there is one, a progress bar on standard error, and
// questions answered on standard input.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

bool standardInputIsTerminal();
bool standardOutputIsTerminal();
bool standardErrorIsTerminal();

// A one-line bar on standard error, drawn only when standard error is a terminal, not
// before a quarter of a second has passed and at most ten times a second.
class ProgressBar {
public:
  explicit ProgressBar(bool enabled);
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
  std::chrono::steady_clock::time_point start_, lastDraw_;
};

// Writes `prompt` to standard error and reads one line from standard input. False at the end
// of the input.
bool askLine(const std::string &prompt, std::string &answer);
