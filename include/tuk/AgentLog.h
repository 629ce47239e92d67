// The agent's log: a test of logEnabled and a call of the host's LogSink, so that a log line's
// arguments are not evaluated while the log is off. Declared here, below every layer that
// logs (the store, the clients, the agent and its settings); logSink and logEnabled are
// defined with the module's entry points, in agent/.
//
// Each source file names itself once with AGENT_LOG_SOURCE(".\\Stem") and then writes
// AGENT_LOG(format, ...).
#pragma once

#include "include/tuk/AgentAbi.h"

#include <cstdint>

extern LogSink logSink;     // copied from the host by a first initialisation
extern uint32_t logEnabled; // 0: off; any other value: on

#define AGENT_LOG_SOURCE(name) [[maybe_unused]] static const char logSource[] = name

#define AGENT_LOG(...)                                                                             \
  do {                                                                                             \
    if (logEnabled && logSink)                                                                     \
      logSink(0, logSource, __LINE__, __VA_ARGS__);                                                \
  } while (0)
