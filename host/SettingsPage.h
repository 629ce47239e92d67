// The agent's settings page in a frame of the host's, from propPageInit to propPageClose:
// its fields, the check step and the store step.
#pragma once

#include "include/tuk/AgentAbi.h"
#include "platform/WindowApi.h"

#include <string>

class SettingsPage {
public:
  // Makes the frame and has the agent build its page in it; isOpen() tells whether it did.
  SettingsPage(const AgentEntryTable &entries, const std::string &title);
  SettingsPage(const SettingsPage &) = delete;
  SettingsPage &operator=(const SettingsPage &) = delete;
  // Closes the page (storing nothing) and destroys the frame.
  ~SettingsPage();

  bool isOpen() const { return page_ != 0; }
  std::string mailDirectory() const;
  std::string programDirectory() const;
  bool setMailDirectory(const std::string &directory);
  bool setProgramDirectory(const std::string &directory);
  bool setAttachments(bool on);

  // Validate(0): true when the host may go on, false when the person chose to stay.
  bool check();
  // Validate(1): the page's values go into the registry.
  void store();

private:
  TukWindow control(int32_t id) const;

  const AgentEntryTable &entries_;
  TukWindow frame_ = 0;
  TukWindow page_ = 0;
};
