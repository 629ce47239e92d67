// Answering the window system's questions at the terminal.
#include "host/TerminalUser.h"

#include "host/Terminal.h"

#include <cstdio>

namespace {

constexpr uint32_t kButtonsMask = 0x0F;
constexpr uint32_t kRetryCancel = 5;

void printMessageBox(const TukUserEvent &event) {
  std::printf("== %s ==\n%s\n", event.caption, event.text);
  std::fflush(stdout);
}

int32_t answerMessageBox(TerminalUser &user, const TukUserEvent &event) {
  ++user.messageBoxes;
  printMessageBox(event);
  if ((event.flags & kButtonsMask) != kRetryCancel)
    return 0; // no button named: the box's own answer (OK, or Cancel where it has one)
  std::string answer;
  if (!user.mayAsk) {
    std::printf("(answered Cancel)\n");
    return TUK_ID_CANCEL;
  }
  if (!askLine("Retry (give other values) or Cancel (keep these)? [r/C] ", answer))
    return TUK_ID_CANCEL;
  return !answer.empty() && (answer[0] == 'r' || answer[0] == 'R') ? TUK_ID_RETRY : TUK_ID_CANCEL;
}

int32_t answerUser(void *context, const TukUserEvent *event) {
  if (context == nullptr || event == nullptr)
    return 0;
  TerminalUser &user = *static_cast<TerminalUser *>(context);
  switch (event->kind) {
  case TUK_USER_MESSAGE_BOX:
    return answerMessageBox(user, *event);
  case TUK_USER_MODAL_DIALOG:
    ++user.dialogs;
    if (user.showDialog)
      user.showDialog(event->window);
    return 0;
  default:
    return 0; // the folder picker is cancelled; help is shown to nobody
  }
}

} // namespace

ScopedUser::ScopedUser(TerminalUser &user) {
  tukSetUser(answerUser, &user);
}

ScopedUser::~ScopedUser() {
  tukSetUser(nullptr, nullptr);
}

std::string windowText(TukWindow window) {
  const int32_t length = tukWindowGetText(window, nullptr, 0);
  if (length <= 0)
    return std::string();
  std::string text(static_cast<size_t>(length) + 1, '\0');
  const int32_t copied = tukWindowGetText(window, &text[0], length + 1);
  text.resize(copied >= 0 && copied <= length ? static_cast<size_t>(copied) : 0);
  return text;
}
