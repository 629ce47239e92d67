// CEudoraAgent: the Eudora agent.
#include "agent/EudAgent.h"

#include "include/tuk/AgentLog.h"
#include "resources/resource.h"
#include "store/MailHeaders.h"

AGENT_LOG_SOURCE(".\\EudAgent");

static const ClientTraits eudoraTraits = {IDS_EUDORA_NAME, ".MBX", ".TOC", IDS_EUD_EXE, false};

CEudoraAgent::CEudoraAgent(const CString &language, const char *agentKey)
    : CClientAgent(eudoraTraits) {
  loadAttachmentStrings();
  loadStatics(language, agentKey);
}

int32_t CEudoraAgent::openObject(AgentHandle *object, const ObjectRecord *record, int32_t *time) {
  AGENT_LOG("Opening file %s", record->path);
  return CMHAgent::openObject(object, record, time);
}
