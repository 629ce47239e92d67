// CInternetMailAgent: the Internet Mail agent.
#pragma once

#include "agent/Agent.h"
#include "clients/InternetMail.h"
#include "settings/ClientPages.h"

class CInternetMailAgent
    : public CClientAgent<CInternetMailMailFile, CInternetMailMailIndex, CIMPropPage> {
public:
  CInternetMailAgent(const CString &language, const char *agentKey);
};
