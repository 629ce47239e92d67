// runGuarded on Windows: an EXCEPTION_IN_PAGE_ERROR from a read of a view whose file could
// not be read (cut short, or on a volume that went away) ends the guarded call, not the
// process.
//
// How it works. One process-wide vectored exception handler, added on first use. Each thread
// has a pointer to the guard frame of its innermost running guarded call. The handler claims
// only an in-page error on a thread with a frame: it lets the system finish its dispatch and
// resume the thread in faultLanding, on the thread's own stack below the faulting frame, and
// faultLanding jumps back into runGuarded, which returns false. Every other exception, and an
// in-page error outside a guarded call, goes on to the handlers that would have had it.
//
// Why __builtin_setjmp. The C library's longjmp on Windows unwinds frame by frame, and the
// frame that faulted has no call into faultLanding to unwind through; the builtin restores
// the stack and frame pointers and jumps, and the compiler saves every register that
// runGuarded needs across it.
#include "FaultGuard.h"
#include "FrameRestorer.h"

#include "WinTypes.h"

#include <atomic>
#include <mutex>

namespace {

struct GuardFrame {
  void *resume[5]; // __builtin_setjmp's buffer
  GuardFrame *outer;
};

thread_local GuardFrame *innermostFrame = nullptr;
std::once_flag handlerAdded;
std::atomic<bool> handlerReady{false};

[[noreturn]] void faultLanding() {
  __builtin_longjmp(innermostFrame->resume, 1);
}

LONG CALLBACK onException(EXCEPTION_POINTERS *exception) {
  if (exception->ExceptionRecord->ExceptionCode != EXCEPTION_IN_PAGE_ERROR ||
      innermostFrame == nullptr)
    return EXCEPTION_CONTINUE_SEARCH;
  CONTEXT *context = exception->ContextRecord;
  // Well below the faulting frame, aligned as at a function's entry (after a call's push).
#if defined(_M_X64) || defined(__x86_64__)
  context->Rsp = ((context->Rsp - 512) & ~DWORD64{15}) - 8;
  context->Rip = reinterpret_cast<DWORD64>(&faultLanding);
#else
  context->Esp = ((context->Esp - 512) & ~DWORD{15}) - 4;
  context->Eip = reinterpret_cast<DWORD>(&faultLanding);
#endif
  return EXCEPTION_CONTINUE_EXECUTION;
}

void ensureHandler() {
  if (handlerReady.load(std::memory_order_acquire))
    return;
  // Last in the chain: a host's own handlers see every exception first.
  std::call_once(handlerAdded, [] { AddVectoredExceptionHandler(0, onException); });
  handlerReady.store(true, std::memory_order_release);
}

} // namespace

bool runGuarded(void (*fn)(void *context), void *context) {
  ensureHandler();
  GuardFrame **const innermost = &innermostFrame;
  GuardFrame frame;
  frame.outer = *innermost;
  FrameRestorer<GuardFrame> restorer(innermost, frame.outer);
  if (__builtin_setjmp(frame.resume) != 0)
    return false;
  *innermost = &frame;
  std::atomic_signal_fence(std::memory_order_seq_cst);
  fn(context);
  return true;
}
