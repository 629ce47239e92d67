// Timed runs of a program in a fresh process, with its peak memory sampled from /proc while
// it runs.
//
// Not ru_maxrss: on Linux a process's peak resident size carries over the size of the
// process that spawned it (the address space that exec replaced), so it tells nothing of a
// small child of a large parent. Its processor times are its own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct ProcessRun {
  bool started = false;
  int exitStatus = -1;       // the exit code, or -1 when it died of a signal
  double seconds = 0;        // from the spawn to the reaping
  double cpuSeconds = 0;     // the processor time it used, user and system: on a machine
                             // that others share, steadier than `seconds`
  uint64_t peakAnon = 0;     // bytes: the largest resident anonymous size seen (every ~1 ms)
  uint64_t peakResident = 0; // bytes: the last peak resident size seen (VmHWM), mapped file
                             // pages included
  std::string output;        // standard output, when captured
};

// Runs `argv` with `environment` added to this process's. Standard output is captured or
// sent to /dev/null; standard error is this process's.
ProcessRun runProcess(const std::vector<std::string> &argv,
                      const std::vector<std::string> &environment, bool captureOutput);
