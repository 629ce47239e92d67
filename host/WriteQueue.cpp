// The index writes' thread.
#include "host/WriteQueue.h"

WriteQueue::WriteQueue(size_t capacity) : capacity_(capacity), thread_([this] { work(); }) {}

WriteQueue::~WriteQueue() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  jobsCame_.notify_one();
  thread_.join();
}

void WriteQueue::post(std::function<void()> job) {
  std::unique_lock<std::mutex> lock(mutex_);
  roomOrDone_.wait(lock, [this] { return jobs_.size() < capacity_; });
  jobs_.push_back(std::move(job));
  const bool wake = sleeping_;
  lock.unlock();
  if (wake)
    jobsCame_.notify_one();
}

void WriteQueue::drain() {
  std::unique_lock<std::mutex> lock(mutex_);
  roomOrDone_.wait(lock, [this] { return jobs_.empty() && !busy_; });
}

void WriteQueue::work() {
  std::deque<std::function<void()>> taken;
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    sleeping_ = true;
    jobsCame_.wait(lock, [this] { return !jobs_.empty() || stopping_; });
    sleeping_ = false;
    if (jobs_.empty())
      return; // stopping, and nothing left
    taken.swap(jobs_);
    busy_ = true;
    lock.unlock();
    roomOrDone_.notify_all(); // room for the next posts
    for (std::function<void()> &job : taken)
      job();
    taken.clear();
    lock.lock();
    busy_ = false;
    roomOrDone_.notify_all(); // a drain may be waiting
  }
}
