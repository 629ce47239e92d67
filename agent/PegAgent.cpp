// CPegasusAgent: the Pegasus agent.
#include "agent/PegAgent.h"

#include "resources/resource.h"
#include "store/MailHeaders.h"

static const ClientTraits pegasusTraits = {IDS_PEGASUS_NAME, ".PMM", ".PMI", IDS_PEG_EXE, true};

CPegasusAgent::CPegasusAgent(const CString &language, const char *agentKey)
    : CClientAgent(pegasusTraits) {
  loadStatics(language, agentKey);
}
