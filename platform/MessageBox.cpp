// MessageBoxA: the question goes to the process-wide user. Without one, or for an answer that
// names no button of the box, the box answers Cancel where it has one and OK otherwise.
#include "User.h"
#include "Window.h"

#include <algorithm>
#include <iterator>

namespace {

// The buttons of each kind of box, by the low bits of its type; unused places hold 0.
constexpr int kButtons[][3] = {
    {IDOK},        {IDOK, IDCANCEL},    {IDABORT, IDRETRY, IDIGNORE}, {IDYES, IDNO, IDCANCEL},
    {IDYES, IDNO}, {IDRETRY, IDCANCEL},
};

bool hasButton(UINT type, int button) {
  const UINT kind = type & MB_TYPEMASK;
  const int *buttons = kButtons[kind < std::size(kButtons) ? kind : MB_OK];
  return button != 0 && std::find(buttons, buttons + 3, button) != buttons + 3;
}

} // namespace

int MessageBoxA(HWND owner, const char *text, const char *caption, UINT type) {
  TukUserEvent event{};
  event.kind = TUK_USER_MESSAGE_BOX;
  event.window = IsWindow(owner) ? reinterpret_cast<TukWindow>(owner) : 0;
  event.text = text != nullptr ? text : "";
  event.caption = caption != nullptr ? caption : "Error";
  event.flags = type;
  bool answered = false;
  const int answer = askUser(event, answered);
  if (answered && hasButton(type, answer))
    return answer;
  return hasButton(type, IDCANCEL) ? IDCANCEL : IDOK;
}
