// An agent brought up in the test process through its own initAgent, for white-box tests of
// the code behind the entries (names, string table and module state as a host would have).
#pragma once

#include "agent/mhmail.h"
#include "include/tuk/AgentAbi.h"

#include <string>

class AgentSession {
public:
  explicit AgentSession(const std::string &agentKey = "Software\\Tuk\\Agents\\MHEudora",
                        const std::string &language = "EN", LogSink sink = nullptr);
  AgentSession(const AgentSession &) = delete;
  AgentSession &operator=(const AgentSession &) = delete;
  ~AgentSession();
  const AgentEntryTable &entries() const { return *result_.entryTable; }

private:
  // Code under test runs as inside an entry: with the agent's module state current.
  AFX_MAINTAIN_STATE moduleState_{agentModuleState()};
  AgentResult result_{};
};

// An ObjectRecord with room for its path.
class RecordBuffer {
public:
  explicit RecordBuffer(size_t capacity = 4096);
  RecordBuffer(const std::string &path, uint32_t offset, uint32_t length, uint32_t checksum,
               int32_t stamp = 0);
  ObjectRecord *get() { return reinterpret_cast<ObjectRecord *>(bytes_.data()); }
  const ObjectRecord *get() const { return reinterpret_cast<const ObjectRecord *>(bytes_.data()); }
  ObjectRecord *operator->() { return get(); }
  size_t capacity() const { return bytes_.size(); }
  unsigned char *bytes() { return reinterpret_cast<unsigned char *>(bytes_.data()); }

private:
  std::string bytes_;
};
