// CNetscapeAgent: the Netscape agent.
#pragma once

#include "agent/Agent.h"
#include "clients/NSMFile.h"
#include "settings/ClientPages.h"

class CNetscapeAgent : public CClientAgent<CNetscapeMailFile, CNetscapeMailIndex, CNSPropPage> {
public:
  CNetscapeAgent(const CString &language, const char *agentKey);
};
