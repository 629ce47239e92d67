// The index writes' thread.
#include "host/WriteQueue.h"

WriteQueue::WriteQueue(size_t capacity) : capacity_(capacity), thread_([this] { work(); }) {}

WriteQueue::~WriteQueue() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void WriteQueue::post(std::function<void()> job) {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [this] { return jobs_.size() < capacity_; });
  jobs_.push_back(std::move(job));
  lock.unlock();
  changed_.notify_all();
}

void WriteQueue::drain() {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [this] { return jobs_.empty() && !busy_; });
}

void WriteQueue::work() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return !jobs_.empty() || stopping_; });
    if (jobs_.empty())
      return; // stopping, and nothing left
    std::function<void()> job = std::move(jobs_.front());
    jobs_.pop_front();
    busy_ = true;
    lock.unlock();
    changed_.notify_all(); // room for the next post
    job();
    lock.lock();
    busy_ = false;
    changed_.notify_all(); // a drain may be waiting
  }
}
