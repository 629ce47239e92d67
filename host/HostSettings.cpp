// The options common to all commands, and the default database location.
#include "host/HostSettings.h"

#include "host/AgentLibrary.h"
#include "host/Clients.h"

#include <cstdlib>
#include <dirent.h>
#include <limits.h>
#include <pwd.h>
#include <sys/stat.h>
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

// A language other than EN needs its module beside the agent: tuk_mhmail<LANG>.so. Without
// it the agent would go on in English, which is not what was asked for.
bool languageModuleExists(const std::string &language, std::string &error) {
  if (language == "EN")
    return true;
  const std::string directory = agentDirectory();
  struct stat status;
  if (stat((directory + "/tuk_mhmail" + language + ".so").c_str(), &status) == 0)
    return true;
  std::string found = "EN";
  if (DIR *const listing = opendir(directory.c_str())) {
    while (const dirent *entry = readdir(listing)) {
      const std::string name = entry->d_name;
      const std::string prefix = "tuk_mhmail", suffix = ".so";
      if (name.size() > prefix.size() + suffix.size() &&
          name.compare(0, prefix.size(), prefix) == 0 &&
          name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
        found += ", " + name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
    }
    closedir(listing);
  }
  error = "there is no language module " + language + " (tuk_mhmail" + language + ".so in " +
          directory + "); the languages are: " + found;
  return false;
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
  if (!languageModuleExists(settings.language, error))
    return false;
  settings.log = line.has("log");
  settings.askNothing = line.askNothing;
  return true;
}

void useRegistryFile(const HostSettings &settings) {
  if (!settings.registryPath.empty())
    setenv("TUK_REGISTRY", settings.registryPath.c_str(), 1);
}
