// runGuarded: a SIGBUS from a read of a truncated mapping ends the guarded call, not the
// process.
//
// How it works. One process-wide SIGBUS handler, installed on first use. Each thread has a
// pointer to the guard frame of its innermost running guarded call (null when there is none).
// A fault on a thread with a frame jumps back into that runGuarded, which returns false; any
// other SIGBUS goes to the handler that was installed before ours, or, where there was none,
// kills the process as it would have died without us.
//
// Why sigsetjmp(frame, 0). Saving the signal mask costs a system call, and a guard runs once
// per message on the hot path of a walk. Without the mask saved, siglongjmp leaves the mask
// as it was inside the handler, so the handler must not block anything: SA_NODEFER keeps
// SIGBUS itself unblocked and sa_mask is empty. Otherwise the second fault on a thread would
// find SIGBUS blocked, and the kernel kills a process that faults with the signal blocked.
#include "FaultGuard.h"
#include "FrameRestorer.h"

#include <atomic>
#include <csetjmp>
#include <csignal>
#include <mutex>

namespace {

struct GuardFrame {
  sigjmp_buf resume;
  GuardFrame *outer; // the frame of an enclosing guarded call on this thread, or null
};

thread_local GuardFrame *innermostFrame = nullptr;

struct sigaction previousAction; // written once, before our handler can run
std::once_flag handlerInstalled;
// Set once the handler is in place: the guarded calls after the first test this flag alone,
// not the once flag, whose test costs several thread-local lookups.
std::atomic<bool> handlerReady{false};

// Passes a SIGBUS that no guard claims on to whoever would have had it without us.
void passOn(int signal, siginfo_t *info, void *context) {
  if (previousAction.sa_flags & SA_SIGINFO) {
    previousAction.sa_sigaction(signal, info, context);
    return;
  }
  if (previousAction.sa_handler != SIG_DFL && previousAction.sa_handler != SIG_IGN) {
    previousAction.sa_handler(signal);
    return;
  }
  // An ignored SIGBUS that a process sent stays ignored. A fault can't be ignored: the
  // kernel kills a process that ignores one. Either way, die of it by the default action.
  const bool sentByAProcess = info == nullptr || info->si_code <= 0;
  if (previousAction.sa_handler == SIG_IGN && sentByAProcess)
    return;
  struct sigaction defaultAction = {};
  defaultAction.sa_handler = SIG_DFL;
  sigemptyset(&defaultAction.sa_mask);
  sigaction(SIGBUS, &defaultAction, nullptr);
  sigset_t busOnly;
  sigemptyset(&busOnly);
  sigaddset(&busOnly, SIGBUS);
  pthread_sigmask(SIG_UNBLOCK, &busOnly, nullptr);
  raise(SIGBUS);
}

void onBusError(int signal, siginfo_t *info, void *context) {
  // Only a fault of this thread's own memory access is a damaged read (si_code > 0 is set by
  // the kernel for a fault); a SIGBUS that some process sent is not the guard's to swallow.
  GuardFrame *const frame = innermostFrame;
  if (frame != nullptr && info != nullptr && info->si_code > 0)
    siglongjmp(frame->resume, 1);
  passOn(signal, info, context);
}

void installHandler() {
  // Read the old action before installing ours, so that it is complete before our handler
  // can run on any thread.
  sigaction(SIGBUS, nullptr, &previousAction);
  struct sigaction action = {};
  action.sa_sigaction = onBusError;
  sigemptyset(&action.sa_mask);
  // SA_ONSTACK: where a thread has an alternate signal stack (sanitizers set one up, a host
  // may), the earlier handler that we pass signals on to keeps running on it as before.
  action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_ONSTACK;
  sigaction(SIGBUS, &action, nullptr);
}

void ensureHandler() {
  if (handlerReady.load(std::memory_order_acquire))
    return;
  std::call_once(handlerInstalled, installHandler);
  handlerReady.store(true, std::memory_order_release);
}

} // namespace

bool runGuarded(void (*fn)(void *context), void *context) {
  ensureHandler();
  // This thread's slot, looked up once (in a shared library each lookup is a call). Taking
  // its address is also the first touch of the thread-local on this thread: its storage is
  // allocated here, never by the handler, where allocating is not safe.
  GuardFrame **const innermost = &innermostFrame;
  GuardFrame frame;
  frame.outer = *innermost;
  FrameRestorer<GuardFrame> restorer(innermost, frame.outer);
  if (sigsetjmp(frame.resume, 0) != 0)
    return false;
  *innermost = &frame;
  // The handler reads innermostFrame asynchronously: the compiler must not sink the store.
  std::atomic_signal_fence(std::memory_order_seq_cst);
  fn(context);
  return true;
}
