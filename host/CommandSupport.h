// What several commands share: loading the agent for a key, the mail directory an agent's
// store has, and a hit's id from the command line.
#pragma once

#include "host/AgentLibrary.h"
#include "host/CommandLine.h"
#include "host/HostSettings.h"
#include "host/RecordBuffer.h"

#include <cstdint>
#include <memory>
#include <string>

// The agent for `agentKey`, with the settings' language and log. Null with `error` set.
std::unique_ptr<AgentLibrary> loadAgent(const HostSettings &settings, const std::string &agentKey,
                                        std::string &error);

// The agent's mail directory, which must exist. False with `error` set for a person: no
// directory configured, or one that is not there.
bool existingMailDirectory(const std::string &agentKey, std::string &directory, std::string &error);

// A hit's id: a positive decimal number.
bool parseObjectId(const std::string &text, int64_t &id);

// A hit of the index, ready to be opened: its stored record and the agent of its store.
struct IndexedHit {
  int64_t id = 0;
  std::string agentKey;
  RecordBuffer record;
  std::unique_ptr<AgentLibrary> agent;
};

// Finds the hit that the command line's ID names and loads its agent. Returns 0, or the exit
// status to give after the error has been reported.
int loadIndexedHit(const std::string &command, const CommandLine &line,
                   const HostSettings &settings, IndexedHit &hit);
