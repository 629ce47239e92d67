// The shared agent is the static agent library linked whole; this unit only anchors it.
#include "include/tuk/AgentAbi.h"
