// GetRegValue and SetRegValue of the common library, with std::string.
#include "host/AgentRegistry.h"

#include "cmn/Registry.h"
#include "host/Clients.h"

#include <algorithm>

const char kMailPathValue[] = "MailPath";
const char kExePathValue[] = "ExePath";
const char kMailFileExtValue[] = "MailFileExt";
const char kCtrlFileExtValue[] = "CtrlFileExt";

bool readAgentValue(const std::string &agentKey, const char *valueName, std::string &value) {
  CString text;
  if (GetRegValue(agentKey.c_str(), valueName, text) == 0)
    return false;
  value = text.bytes();
  return true;
}

bool writeAgentValue(const std::string &agentKey, const char *valueName, const std::string &value) {
  return SetRegValue(agentKey.c_str(), valueName,
                     CString(value.data(), static_cast<int>(value.size()))) != 0;
}

namespace {
// mhhost's own values: the keys of the stores config set up, separated by ";".
const char kHostKey[] = "Software\\Tuk\\Hosts\\mhhost";
const char kStoresValue[] = "Stores";

std::vector<std::string> rememberedStores() {
  std::string list;
  std::vector<std::string> keys;
  if (!readAgentValue(kHostKey, kStoresValue, list))
    return keys;
  for (size_t start = 0; start <= list.size();) {
    const size_t end = std::min(list.find(';', start), list.size());
    if (end > start)
      keys.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return keys;
}
} // namespace

std::vector<std::string> configuredStores() {
  std::vector<std::string> keys;
  for (const char *name : {"eudora", "internet", "netscape", "pegasus"}) {
    const std::string key = defaultAgentKey(*findClient(name));
    std::string directory;
    if (readAgentValue(key, kMailPathValue, directory) && !directory.empty())
      keys.push_back(key);
  }
  for (const std::string &key : rememberedStores())
    if (std::find(keys.begin(), keys.end(), key) == keys.end())
      keys.push_back(key);
  return keys;
}

bool rememberStore(const std::string &agentKey) {
  const std::vector<std::string> keys = rememberedStores();
  if (std::find(keys.begin(), keys.end(), agentKey) != keys.end())
    return true;
  std::string list;
  for (const std::string &key : keys)
    list += key + ";";
  return writeAgentValue(kHostKey, kStoresValue, list + agentKey);
}

std::string registryFile() {
  return registryFilePath().bytes();
}

std::string fileKeyOf(const std::string &agentKey, const std::string &tag) {
  const size_t at = agentKey.find(tag);
  return at == std::string::npos || at == 0 ? std::string() : agentKey.substr(0, at) + "File";
}

bool readAgentNumber(const std::string &key, const char *valueName, int32_t &value) {
  return GetRegValue(key.c_str(), valueName, &value) != 0;
}
