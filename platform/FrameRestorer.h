// FrameRestorer, private to the platform library's fault guards: puts a thread's innermost
// guard frame back however runGuarded is left.
#pragma once

#include <atomic>

// Restores the enclosing frame however runGuarded is left: by return, by a fault, or by an
// exception from the guarded function.
template <class Frame> class FrameRestorer {
public:
  FrameRestorer(Frame **innermost, Frame *outer) : innermost_(innermost), outer_(outer) {}
  FrameRestorer(const FrameRestorer &) = delete;
  FrameRestorer &operator=(const FrameRestorer &) = delete;
  ~FrameRestorer() {
    // The fault handler reads the slot asynchronously: the store must not move.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    *innermost_ = outer_;
  }

private:
  Frame **const innermost_;
  Frame *const outer_;
};
