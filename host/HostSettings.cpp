// The options common to all commands, and the default database location.
#include "host/HostSettings.h"

#include "host/Clients.h"

#include <cstdlib>
#include <limits.h>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace {

std::string homeDirectory() {
  const char *home = std::getenv("HOME");
  if (home != nullptr && *home != '\0')
    return home;
  const struct passwd *account = getpwuid(getuid());
  return account != nullptr && account->pw_dir != nullptr ? account->pw_dir : "";
}

} // namespace

std::string absolutePath(const std::string &path) {
  if (path.empty() || path[0] == '/')
    return path;
  std::vector<char> directory(PATH_MAX);
  if (getcwd(directory.data(), directory.size()) == nullptr)
    return path;
  std::string joined = directory.data();
  if (path == ".")
    return joined;
  return joined + "/" + (path.compare(0, 2, "./") == 0 ? path.substr(2) : path);
}

std::string defaultDatabasePath() {
  const char *dataHome = std::getenv("XDG_DATA_HOME");
  // The base directory rules ignore a relative $XDG_DATA_HOME.
  if (dataHome != nullptr && dataHome[0] == '/')
    return std::string(dataHome) + "/tuk/mhhost.db";
  return homeDirectory() + "/.local/share/tuk/mhhost.db";
}

bool readHostSettings(const CommandLine &line, HostSettings &settings, std::string &error) {
  if (line.has("client") && line.has("key")) {
    error = "give --client or --key, not both";
    return false;
  }
  if (line.has("client")) {
    const ClientInfo *client = findClient(line.value("client"));
    if (client == nullptr) {
      error = "unknown client '" + line.value("client") + "' (one of " + clientNames() + ")";
      return false;
    }
    settings.agentKey = defaultAgentKey(*client);
  }
  if (line.has("key")) {
    settings.agentKey = line.value("key");
    if (clientOfKey(settings.agentKey) == nullptr) {
      error = "the key '" + settings.agentKey +
              "' names no client: it must hold MHEudora, MHInternet, MHNetscape or MHPegasus";
      return false;
    }
  }
  for (const char *name : {"registry", "db", "language"}) {
    if (line.has(name) && line.value(name).empty()) {
      error = std::string("--") + name + " needs a value";
      return false;
    }
  }
  settings.registryPath = absolutePath(line.value("registry"));
  settings.databasePath = line.has("db") ? absolutePath(line.value("db")) : defaultDatabasePath();
  settings.language = line.value("language", "EN");
  settings.log = line.has("log");
  settings.askNothing = line.askNothing;
  return true;
}

void useRegistryFile(const HostSettings &settings) {
  if (!settings.registryPath.empty())
    setenv("TUK_REGISTRY", settings.registryPath.c_str(), 1);
}
