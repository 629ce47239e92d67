// The agent of the fuzz targets that parse mail: brought up once, in this process.
#include "fuzz/FuzzSupport.h"

#include "agent/mhmail.h"
#include "include/tuk/AgentAbi.h"

#include <cstdlib>

void bringAgentUp() {
  static const bool up = [] {
    // The agent reads its header name overrides at start-up: from a registry of its own.
    ::setenv("TUK_REGISTRY", (scratchDir() + "/agent-registry.reg").c_str(), 1);
    // Never destroyed: the state stays current for every input of the run.
    static AFX_MAINTAIN_STATE *const state = new AFX_MAINTAIN_STATE(agentModuleState());
    (void)state;
    const AgentParams params = {"Software\\Tuk\\Agents\\MHEudora", nullptr, "EN", 0, 0, 0};
    AgentResult result = {};
    return initAgent(&params, &result) == 0 && result.entryTable != nullptr;
  }();
  FUZZ_CHECK(up);
}
