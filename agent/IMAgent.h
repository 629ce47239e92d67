// The Internet Mail agent.
#pragma once

#include "agent/Agent.h"
#include "clients/InternetMail.h"

class CInternetMailAgent : public CClientAgent<CInternetMailMailFile, CInternetMailMailIndex> {
public:
  CInternetMailAgent(const CString &language, const char *agentKey);
};
