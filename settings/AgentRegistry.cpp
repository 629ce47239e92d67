// CMHAgent's registry values: the two directories under the agent key, and the key beside
// the client's own key.
#include "agent/Agent.h"

#include "cmn/Registry.h"
#include "include/tuk/AgentLog.h"
#include "settings/PropPage.h"

AGENT_LOG_SOURCE(".\\Agent");

std::unique_ptr<CString> CMHAgent::getFileAgentKey(const CString &tag) const {
  const int position = agentKeyName.Find(tag);
  // Absent, or at the very start: there is no parent to put the key under.
  if (position < 1)
    return nullptr;
  // No separator is added: the one in front of the tag stays; text behind the tag goes.
  auto key = std::make_unique<CString>(agentKeyName.Left(position));
  *key += fileKeyName;
  return key;
}

int CMHAgent::getRegistrySettings(CString &mailPath, CString &exePath) {
  if (!GetRegValue(agentKeyName, mailPathName, mailPath))
    AGENT_LOG("Failed trying to get MailPath value\n");
  else
    AGENT_LOG("MailPath: %s\n", mailPath.GetString());
  if (!GetRegValue(agentKeyName, exePathName, exePath))
    AGENT_LOG("Failed trying to get ExePath value\n");
  else
    AGENT_LOG("ExePath: %s\n", exePath.GetString());
  return 0;
}

int CMHAgent::setRegistrySettings(const CString &mailPath, const CString &exePath) {
  if (!SetRegValue(agentKeyName, mailPathName, mailPath)) {
    AGENT_LOG("Failed trying to set MailPath value\n");
    return -1;
  }
  if (!SetRegValue(agentKeyName, exePathName, exePath)) {
    AGENT_LOG("Failed trying to set ExePath value\n");
    return -1;
  }
  return 0;
}

void CMHAgent::readSettings(CString &mailPath, CString &exePath, int32_t &) {
  getRegistrySettings(mailPath, exePath);
}

void CMHAgent::writeSettings(const CPropPage &page) {
  // A failed write has been logged; the host is not told.
  setRegistrySettings(page.mailPath, page.exePath);
}
