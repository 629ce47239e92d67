// GetRegValue and SetRegValue of the common library, with std::string.
#include "host/AgentRegistry.h"

#include "cmn/Registry.h"

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
