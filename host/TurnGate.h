// Lets at most a given number of callers through at once, in the order they came: a server
// holds a thread for each open connection, and fifty searches run together would each take
// fifty times as long, the longest the most; in turn, each waits for those before it only.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

class TurnGate {
public:
  explicit TurnGate(unsigned width) : free_(width == 0 ? 1 : width) {}
  TurnGate(const TurnGate &) = delete;
  TurnGate &operator=(const TurnGate &) = delete;

  // Callers waiting for their turn.
  size_t waiting() {
    const std::lock_guard<std::mutex> hold(lock_);
    return waiting_.size();
  }

  // Holds a place from its making until its end.
  class Turn {
  public:
    explicit Turn(TurnGate &gate) : gate_(gate) { gate_.enter(); }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;
    ~Turn() { gate_.leave(); }

  private:
    TurnGate &gate_;
  };

private:
  struct Waiter {
    std::condition_variable called;
    bool admitted = false;
  };

  void enter() {
    std::unique_lock<std::mutex> hold(lock_);
    if (free_ > 0 && waiting_.empty()) {
      --free_;
      return;
    }
    Waiter me;
    waiting_.push_back(&me);
    me.called.wait(hold, [&me] { return me.admitted; });
  }

  // The place goes to the first in line, if any, and only that one is woken.
  void leave() {
    const std::lock_guard<std::mutex> hold(lock_);
    if (waiting_.empty()) {
      ++free_;
      return;
    }
    Waiter *const next = waiting_.front();
    waiting_.pop_front();
    next->admitted = true;
    next->called.notify_one();
  }

  std::mutex lock_;
  unsigned free_;
  std::deque<Waiter *> waiting_;
};
