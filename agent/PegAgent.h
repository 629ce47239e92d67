// The Pegasus agent.
#pragma once

#include "agent/Agent.h"
#include "clients/Pegasus.h"

class CPegasusAgent : public CClientAgent<CPegasusMailFile, CPegasusMailIndex> {
public:
  CPegasusAgent(const CString &language, const char *agentKey);
};
