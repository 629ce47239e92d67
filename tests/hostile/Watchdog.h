// A bound on a test that could hang: the process dies of SIGALRM when the scope lasts too
// long, which fails the test instead of stalling the run.
#pragma once

#include <unistd.h>

class Watchdog {
public:
  explicit Watchdog(unsigned seconds) { alarm(seconds); }
  Watchdog(const Watchdog &) = delete;
  Watchdog &operator=(const Watchdog &) = delete;
  ~Watchdog() { alarm(0); }
};
