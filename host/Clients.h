// The four mail clients the agent serves: their names on the command line, their tags in the
// agent key, and the agent key a host passes by default.
#pragma once

#include <string>

struct ClientInfo {
  const char *name; // on the command line: "eudora"
  const char *tag;  // in the agent key: "MHEudora"
};

// The client of a command-line name, or null.
const ClientInfo *findClient(const std::string &name);
// The client an agent key selects: the first tag found in it, in the agent's order; or null.
const ClientInfo *clientOfKey(const std::string &agentKey);
// "Software\Tuk\Agents\" followed by the client's tag.
std::string defaultAgentKey(const ClientInfo &client);
// "eudora|internet|netscape|pegasus"
std::string clientNames();
