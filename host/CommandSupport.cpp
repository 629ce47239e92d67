// Shared pieces of the commands.
#include "host/CommandSupport.h"

#include "host/AgentRegistry.h"
#include "host/Clients.h"
#include "host/ExitStatus.h"
#include "host/IndexDb.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

std::unique_ptr<AgentLibrary> loadAgent(const HostSettings &settings, const std::string &agentKey,
                                        std::string &error) {
  AgentLoadOptions options;
  options.agentKey = agentKey;
  options.language = settings.language;
  options.logToStandardError = settings.log;
  return AgentLibrary::load(options, error);
}

bool existingMailDirectory(const std::string &agentKey, std::string &directory,
                           std::string &error) {
  const ClientInfo *client = clientOfKey(agentKey);
  const std::string configure = std::string("mhhost config --client ") +
                                (client != nullptr ? client->name : "...") + " --mail-dir DIR";
  if (!readAgentValue(agentKey, kMailPathValue, directory) || directory.empty()) {
    error = "no mail directory is set for " + agentKey + " in " + registryFile() +
            "; set one with: " + configure;
    return false;
  }
  struct stat status;
  if (stat(directory.c_str(), &status) != 0) {
    error = "the mail directory " + directory + " of " + agentKey + " is not there (" +
            std::strerror(errno) + "); nothing was changed. Set another with: " + configure;
    return false;
  }
  if (!S_ISDIR(status.st_mode)) {
    error = "the mail directory " + directory + " of " + agentKey +
            " is no directory; nothing was changed. Set another with: " + configure;
    return false;
  }
  return true;
}

bool parseObjectId(const std::string &text, int64_t &id) {
  if (text.empty() || text.size() > 18 || text.find_first_not_of("0123456789") != text.npos)
    return false;
  id = std::strtoll(text.c_str(), nullptr, 10);
  return id > 0;
}

int loadIndexedHit(const std::string &command, const CommandLine &line,
                   const HostSettings &settings, IndexedHit &hit) {
  if (!parseObjectId(line.arguments.front(), hit.id))
    return reportUsageError(command, "ID is the number of a search hit");
  const std::string id = std::to_string(hit.id);
  std::string error;
  const std::unique_ptr<IndexDb> db =
      IndexDb::open(settings.databasePath, IndexDb::Access::ReadOnly, error);
  if (!db)
    return reportError(error);
  IndexedObject indexed;
  if (!db->findObject(hit.id, indexed))
    return reportError(!db->ok()              ? db->errorText()
                       : db->wasGiven(hit.id) ? "message " + id + " is no longer in the store"
                                              : "the index holds no message " + id);
  if (!hit.record.assign(indexed.record.data(), indexed.record.size()))
    return reportError("the record of message " + id + " is damaged");
  hit.agentKey = indexed.agentKey;
  hit.agent = loadAgent(settings, indexed.agentKey, error);
  if (!hit.agent)
    return reportError(error);
  return 0;
}
