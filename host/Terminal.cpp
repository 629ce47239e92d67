// Terminal tests, the progress bar and questions.
#include "host/Terminal.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <unistd.h>

bool standardInputIsTerminal() {
  return isatty(STDIN_FILENO) == 1;
}
bool standardOutputIsTerminal() {
  return isatty(STDOUT_FILENO) == 1;
}
bool standardErrorIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

ProgressBar::ProgressBar(bool enabled, Watcher watcher)
    : enabled_(enabled && standardErrorIsTerminal()), watcher_(std::move(watcher)),
      lastWatched_(std::chrono::steady_clock::now()), start_(lastWatched_), lastDraw_(start_) {}

void ProgressBar::update(uint64_t done, uint64_t total, uint64_t count, const char *what) {
  const auto now = std::chrono::steady_clock::now();
  if (watcher_ && now - lastWatched_ >= std::chrono::milliseconds(200)) {
    lastWatched_ = now;
    watcher_(done, total, count);
  }
  if (!enabled_)
    return;
  if (now - start_ < std::chrono::milliseconds(250) ||
      (drawn_ && now - lastDraw_ < std::chrono::milliseconds(100)))
    return;
  lastDraw_ = now;
  drawn_ = true;
  constexpr int kWidth = 30;
  const double fraction = total > 0 ? std::min(1.0, static_cast<double>(done) / total) : 0.0;
  const int filled = static_cast<int>(fraction * kWidth);
  std::string bar(static_cast<size_t>(filled), '#');
  bar.append(static_cast<size_t>(kWidth - filled), '.');
  std::fprintf(stderr, "\r[%s] %3d%%  %llu %s  %.1f MB\033[K", bar.c_str(),
               static_cast<int>(fraction * 100), static_cast<unsigned long long>(count), what,
               static_cast<double>(done) / 1e6);
  std::fflush(stderr);
}

void ProgressBar::finish() {
  if (drawn_) {
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
  }
  drawn_ = false;
}

bool askLine(const std::string &prompt, std::string &answer) {
  std::fputs(prompt.c_str(), stderr);
  std::fflush(stderr);
  std::fflush(stdout);
  if (!std::getline(std::cin, answer))
    return false;
  if (!answer.empty() && answer.back() == '\r')
    answer.pop_back();
  return true;
}
