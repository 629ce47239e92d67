// The agent module's own state, for code of this library that runs outside an entry (the
// white-box tests): making it current gives lookups the agent's resources.
#pragma once

#include "platform/Modules.h"

AFX_MODULE_STATE *agentModuleState();
