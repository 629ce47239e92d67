// Reads of mapped mail files that survive the file being cut short under them.
//
// A mail client may truncate or rewrite a mailbox while the agent has it mapped. Touching a
// page past the new end raises SIGBUS; inside runGuarded that signal ends the call instead of
// the process. A process-wide SIGBUS handler is installed on first use; it passes every
// signal that does not come from a guarded call on to the handler that was there before.
//
// Rule for a guarded function: it holds nothing that needs clean-up (no owning locals, no
// objects with destructors, no locks) while it touches mapped bytes, because a fault leaves
// it without unwinding.
#pragma once

// Runs `fn(context)`. Returns true when it ran to its end, false when a guarded read faulted.
bool runGuarded(void (*fn)(void *context), void *context);

// The same for any callable; keep its captures to references and plain values.
template <class F> bool runGuarded(F &&fn) {
  return runGuarded([](void *context) { (*static_cast<decltype(&fn)>(context))(); },
                    static_cast<void *>(&fn));
}
