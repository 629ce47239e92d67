// CNetscapeAgent: the Netscape agent.
#include "agent/NSAgent.h"

#include "resources/resource.h"
#include "store/MailHeaders.h"

static const ClientTraits netscapeTraits = {IDS_NETSCAPE_NAME, "", ".SNM", IDS_NS_EXE, false};

CNetscapeAgent::CNetscapeAgent(const CString &language, const char *agentKey)
    : CClientAgent(netscapeTraits) {
  loadStatics(language, agentKey);
}
