// CPegasusAgent: the Pegasus agent.
#pragma once

#include "agent/Agent.h"
#include "clients/Pegasus.h"
#include "settings/ClientPages.h"

class CPegasusAgent : public CClientAgent<CPegasusMailFile, CPegasusMailIndex, CPegPropPage> {
public:
  CPegasusAgent(const CString &language, const char *agentKey);
};
