// The agent's values in the registry file, read and written by the host through the common
// library: the mail directory an index run needs, and the two extensions, which no settings
// page stores.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The names of the values under the agent key.
extern const char kMailPathValue[];
extern const char kExePathValue[];
extern const char kMailFileExtValue[];
extern const char kCtrlFileExtValue[];

// False when the value is not there (or is no string).
bool readAgentValue(const std::string &agentKey, const char *valueName, std::string &value);
// False when the registry file can't be written.
bool writeAgentValue(const std::string &agentKey, const char *valueName, const std::string &value);
// The registry file the common library uses now.
std::string registryFile();

// The key beside the agent key where Eudora keeps its attachment values: the text in front
// of the client's tag, then "File". Empty when the tag is missing or starts the key.
std::string fileKeyOf(const std::string &agentKey, const std::string &tag);
// The stores config has set up: the four clients' default keys that hold a MailPath, and the
// keys config was given, which mhhost keeps under a key of its own.
std::vector<std::string> configuredStores();
// Adds `agentKey` to the stores config has set up. False when the file can't be written.
bool rememberStore(const std::string &agentKey);

// An integer value; false when it is not there.
bool readAgentNumber(const std::string &key, const char *valueName, int32_t &value);
