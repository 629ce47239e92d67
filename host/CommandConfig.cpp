// mhhost config: the directories and the attachments flag through the agent's settings page
// (fields, check step, store step, close), the extensions straight into the registry.
#include "host/AgentRegistry.h"
#include "host/Clients.h"
#include "host/CommandSupport.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/SettingsPage.h"
#include "host/Terminal.h"
#include "host/TerminalUser.h"

#include <cstdio>

namespace {

// ".msf" from "msf" as well; "" stays "" (no extension).
std::string extensionArgument(const std::string &text) {
  return text.empty() || text[0] == '.' ? text : "." + text;
}

// After a Retry: the person gives other values at the terminal. False at the end of input.
bool askForOtherValues(SettingsPage &page) {
  std::string answer;
  if (!askLine("Mail directory [" + page.mailDirectory() + "]: ", answer))
    return false;
  if (!answer.empty())
    page.setMailDirectory(absolutePath(answer));
  if (!askLine("Program directory [" + page.programDirectory() + "]: ", answer))
    return false;
  if (!answer.empty())
    page.setProgramDirectory(absolutePath(answer));
  return true;
}

int runSettingsPage(const CommandLine &line, const HostSettings &settings) {
  std::string error;
  const std::unique_ptr<AgentLibrary> agent = loadAgent(settings, settings.agentKey, error);
  if (!agent)
    return reportError(error);
  TerminalUser user;
  user.mayAsk = !settings.askNothing && !line.has("yes") && standardInputIsTerminal();
  ScopedUser person(user);
  SettingsPage page(agent->entries(), "mhhost: " + agent->displayName() + " settings");
  if (!page.isOpen())
    return reportError("the agent made no settings page");
  if (line.has("mail-dir"))
    page.setMailDirectory(absolutePath(line.value("mail-dir")));
  if (line.has("exe-dir"))
    page.setProgramDirectory(absolutePath(line.value("exe-dir")));
  if (line.has("attachments") && !page.setAttachments(line.value("attachments") == "on"))
    return reportError("the settings page of " + agent->displayName() + " has no attachments box");
  while (!page.check()) {
    if (!askForOtherValues(page))
      return reportError("config ended before the settings were stored; nothing was changed");
  }
  const std::string mailDirectory = page.mailDirectory();
  page.store();
  // The agent does not report a failed write: read the value back.
  std::string stored;
  if (!readAgentValue(settings.agentKey, kMailPathValue, stored) || stored != mailDirectory)
    return reportError("the agent could not store its settings in " + registryFile());
  return kExitOk;
}

void printValue(const std::string &key, const char *name) {
  std::string value;
  if (readAgentValue(key, name, value))
    std::printf("  %-12s %s\n", name, value.empty() ? "\"\" (empty)" : value.c_str());
  else
    std::printf("  %-12s (not set)\n", name);
}

void printSettings(const std::string &agentKey) {
  std::printf("%s in %s:\n", agentKey.c_str(), registryFile().c_str());
  for (const char *name : {kMailPathValue, kExePathValue, kMailFileExtValue, kCtrlFileExtValue})
    printValue(agentKey, name);
  const ClientInfo *client = clientOfKey(agentKey);
  int32_t attachments = 0;
  const std::string fileKey = client != nullptr ? fileKeyOf(agentKey, client->tag) : "";
  if (client == findClient("eudora") && !fileKey.empty() &&
      readAgentNumber(fileKey, "Attachments", attachments))
    std::printf("  %-12s %s (in %s)\n", "Attachments", attachments != 0 ? "on" : "off",
                fileKey.c_str());
}

} // namespace

int runConfig(const CommandLine &line, const HostSettings &settings) {
  const bool pageWork = line.has("mail-dir") || line.has("exe-dir") || line.has("attachments");
  if (!pageWork && !line.has("mail-ext") && !line.has("ctrl-ext"))
    return reportUsageError("config", "nothing to set: give --mail-dir DIR (and what else "
                                      "should change)");
  for (const char *name : {"mail-dir", "exe-dir"})
    if (line.has(name) && line.value(name).empty())
      return reportUsageError("config", std::string("--") + name + " needs a directory");
  if (line.has("attachments")) {
    const std::string value = line.value("attachments");
    if (value != "on" && value != "off")
      return reportUsageError("config", "--attachments is on or off");
    if (clientOfKey(settings.agentKey) != findClient("eudora"))
      return reportUsageError("config", "--attachments is a setting of the eudora client only");
  }
  if (pageWork) {
    const int status = runSettingsPage(line, settings);
    if (status != kExitOk)
      return status;
  }
  const std::pair<const char *, const char *> extensions[] = {{"mail-ext", kMailFileExtValue},
                                                              {"ctrl-ext", kCtrlFileExtValue}};
  for (const auto &extension : extensions) {
    if (line.has(extension.first) &&
        !writeAgentValue(settings.agentKey, extension.second,
                         extensionArgument(line.value(extension.first))))
      return reportError("cannot write " + std::string(extension.second) + " to " + registryFile());
  }
  if (!rememberStore(settings.agentKey))
    return reportError("cannot write the list of stores to " + registryFile());
  printSettings(settings.agentKey);
  return kExitOk;
}
