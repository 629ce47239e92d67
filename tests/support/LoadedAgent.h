// tuk_mhmail.so loaded as a host loads it: dlopen, initAgent, the entry table.
#pragma once

#include "include/tuk/AgentAbi.h"

#include <string>
#include <vector>

class LoadedAgent {
public:
  LoadedAgent();
  LoadedAgent(const LoadedAgent &) = delete;
  LoadedAgent &operator=(const LoadedAgent &) = delete;
  ~LoadedAgent();
  // Calls initAgent; the entry table and name of the result are kept.
  AgentResult init(const std::string &agentKey, const std::string &language = "EN",
                   LogSink sink = nullptr);
  const AgentEntryTable &entries() const { return *table_; }
  static std::string libraryPath();

private:
  void *library_ = nullptr;
  InitAgentFunction initAgent_ = nullptr;
  const AgentEntryTable *table_ = nullptr;
};

// A LogSink that keeps every line, as "source|line text".
struct CapturedLog {
  static int sink(uint32_t zero, const char *sourceFile, int line, const char *format, ...);
  static std::vector<std::string> &lines();
  static bool contains(const std::string &text);
};
