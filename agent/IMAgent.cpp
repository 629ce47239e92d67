// CInternetMailAgent: the Internet Mail agent.
#include "agent/IMAgent.h"

#include "resources/resource.h"
#include "store/MailHeaders.h"

static const ClientTraits internetMailTraits = {IDS_INTERNET_NAME, "", ".SNM", IDS_IM_EXE, false};

CInternetMailAgent::CInternetMailAgent(const CString &language, const char *agentKey)
    : CClientAgent(internetMailTraits) {
  loadStatics(language, agentKey);
}
