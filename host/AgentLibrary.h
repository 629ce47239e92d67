// tuk_mhmail.so, loaded with dlopen and initialised for one agent key. The destructor
// terminates the agent and unloads the library; everything else goes through entries().
#pragma once

#include "include/tuk/AgentAbi.h"

#include <memory>
#include <string>

struct AgentLoadOptions {
  std::string libraryPath; // empty: tuk_mhmail.so beside this program
  std::string agentKey;
  std::string language = "EN";
  bool logToStandardError = false;
};

class AgentLibrary {
public:
  // Null with `error` set when the library cannot be loaded or gives no entry table.
  static std::unique_ptr<AgentLibrary> load(const AgentLoadOptions &options, std::string &error);

  AgentLibrary(const AgentLibrary &) = delete;
  AgentLibrary &operator=(const AgentLibrary &) = delete;
  ~AgentLibrary();

  const AgentEntryTable &entries() const { return *entries_; }
  // The client's display name, as the agent gave it at initialisation.
  const std::string &displayName() const { return displayName_; }

private:
  struct Unloader {
    void operator()(void *library) const;
  };

  AgentLibrary() = default;

  std::unique_ptr<void, Unloader> library_;
  const AgentEntryTable *entries_ = nullptr;
  std::string displayName_;
};

// The directory this program was started from, without a trailing slash.
std::string programDirectory();
// Where the agent and what sits beside it are: this program's directory in a build, or
// ../lib/tuk beside it where the program was installed.
std::string agentDirectory();
