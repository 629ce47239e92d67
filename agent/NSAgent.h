// The Netscape agent.
#pragma once

#include "agent/Agent.h"
#include "clients/Netscape.h"

class CNetscapeAgent : public CClientAgent<CNetscapeMailFile, CNetscapeMailIndex> {
public:
  CNetscapeAgent(const CString &language, const char *agentKey);
};
