// The Eudora agent.
#pragma once

#include "agent/Agent.h"
#include "clients/Eudora.h"

class CEudoraAgent : public CClientAgent<CEudoraMailFile, CEudoraMailIndex> {
public:
  CEudoraAgent(const CString &language, const char *agentKey);

  int32_t openObject(AgentHandle *object, const ObjectRecord *record, int32_t *time) override;

  const CString attachName{"Attachments"};
  const CString attachPathName{"EudAttachPath"};
  const CString clientKeyName{"MHEudora"};
};
