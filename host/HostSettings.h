// What every command takes from the command line: which agent, which registry file, which
// index database, which language, and whether the agent's log goes to standard error.
#pragma once

#include "host/CommandLine.h"

#include <string>

struct HostSettings {
  std::string agentKey;     // empty when the line names no client and no key
  std::string registryPath; // empty: the registry library's default
  std::string databasePath;
  std::string language = "EN";
  bool log = false;
  bool askNothing = false; // no question goes to the person, terminal or not
};

// Reads --client, --key, --registry, --db, --language and --log. A usage error (an unknown
// client, a key without a client's tag, an empty value) gives false and `error`.
bool readHostSettings(const CommandLine &line, HostSettings &settings, std::string &error);

// $XDG_DATA_HOME/tuk/mhhost.db, else ~/.local/share/tuk/mhhost.db.
std::string defaultDatabasePath();

// Points the registry library at settings.registryPath (as TUK_REGISTRY) when one was given.
// Done before the agent is loaded, so that the agent reads the same file.
void useRegistryFile(const HostSettings &settings);

// The path as given if absolute, else joined to the working directory.
std::string absolutePath(const std::string &path);
