// The client table.
#include "host/Clients.h"

namespace {

// In the order in which the agent looks for the tags in a key.
const ClientInfo kClients[] = {
    {"eudora", "MHEudora"},
    {"internet", "MHInternet"},
    {"netscape", "MHNetscape"},
    {"pegasus", "MHPegasus"},
};

} // namespace

const ClientInfo *findClient(const std::string &name) {
  for (const ClientInfo &client : kClients)
    if (name == client.name)
      return &client;
  return nullptr;
}

const ClientInfo *clientOfKey(const std::string &agentKey) {
  for (const ClientInfo &client : kClients)
    if (agentKey.find(client.tag) != std::string::npos)
      return &client;
  return nullptr;
}

std::string defaultAgentKey(const ClientInfo &client) {
  return std::string("Software\\Tuk\\Agents\\") + client.tag;
}

std::string clientNames() {
  std::string names;
  for (const ClientInfo &client : kClients)
    names += (names.empty() ? "" : "|") + std::string(client.name);
  return names;
}
