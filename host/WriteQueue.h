// Writes to the index on a thread of their own, in the order they were posted: the walk, the
// agent's calls and the reading of the next messages go on while SQLite indexes the last
// ones. The agent's calls stay on the caller's thread, one at a time.
//
// Only one thread uses the database at any moment: the queue's thread while jobs wait, the
// caller once drain() has returned.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

class WriteQueue {
public:
  // At most `capacity` jobs wait; post() blocks beyond that, which bounds the memory that
  // messages read ahead take.
  explicit WriteQueue(size_t capacity);
  WriteQueue(const WriteQueue &) = delete;
  WriteQueue &operator=(const WriteQueue &) = delete;
  // Runs every job posted, then ends the thread.
  ~WriteQueue();

  void post(std::function<void()> job);
  // Returns once every job posted has run.
  void drain();

private:
  void work();

  const size_t capacity_;
  std::mutex mutex_;
  // The thread takes every waiting job at once and is woken only from sleep: a message's
  // write must not cost two switches between the threads.
  std::condition_variable jobsCame_, roomOrDone_;
  std::deque<std::function<void()>> jobs_;
  bool sleeping_ = false; // the thread waits for jobs
  bool busy_ = false;     // the thread runs jobs it took
  bool stopping_ = false;
  std::thread thread_;
};
