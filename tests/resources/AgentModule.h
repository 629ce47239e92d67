// The agent's compiled table as a module of the test program, and a scope that makes a
// state owning it current, as an entry of the agent makes its own state current.
#pragma once

#include "platform/Resources.h"

#include <string>

extern const ResourceTable agentResourceTable;

// Anchored in this program, which lies in the build's output directory beside the modules.
inline CModule agentTestModule = {&agentResourceTable, &agentTestModule, nullptr};

class AgentStateScope {
public:
  AgentStateScope() : guard_(&state_) {}
  AFX_MODULE_STATE &state() { return state_; }

private:
  AFX_MODULE_STATE state_ = {&agentTestModule, &agentTestModule, nullptr};
  AFX_MAINTAIN_STATE guard_;
};

// The text of a string entry, zero bytes included; "<none>" when there is none.
inline std::string textOf(const ResourceString *entry) {
  return entry != nullptr ? std::string(entry->text, entry->length) : std::string("<none>");
}
