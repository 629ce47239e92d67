// The person the window system asks, at the terminal: the agent's message boxes are printed
// with their caption and text, a Retry/Cancel question is put on the terminal (or answered
// Cancel when there is none to ask), and a modal dialog is handed to the host's renderer.
// Installed for the life of a ScopedUser.
#pragma once

#include "platform/WindowApi.h"

#include <functional>
#include <string>

struct TerminalUser {
  bool mayAsk = false; // a person is at the terminal and may be asked
  std::function<void(TukWindow dialog)> showDialog;
  int messageBoxes = 0;
  int dialogs = 0;
};

class ScopedUser {
public:
  explicit ScopedUser(TerminalUser &user);
  ScopedUser(const ScopedUser &) = delete;
  ScopedUser &operator=(const ScopedUser &) = delete;
  ~ScopedUser();
};

// The whole text of a window; empty when it has none or is no window.
std::string windowText(TukWindow window);
