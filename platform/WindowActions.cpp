// What a person does to windows: click, press keys, drag the sizing frame, minimise and
// restore. Each goes into the windows as the messages the platform would send.
#include "WindowApi.h"
#include "WindowSystem.h"

#include <algorithm>

namespace {

// The platform's limits for a sizable window before the window adjusts them.
constexpr int kMinTrackWidth = 136;
constexpr int kMinTrackHeight = 39;
// Where and how large a minimised window is.
constexpr int kMinimizedPosition = -32000;
constexpr int kMinimizedWidth = 160;
constexpr int kMinimizedHeight = 28;

bool isAutoCheckBox(const WindowState &box) {
  const DWORD type = box.style & BS_TYPEMASK;
  return type == BS_AUTOCHECKBOX || type == BS_AUTO3STATE;
}

} // namespace

int clickWindow(HWND window) {
  WindowState *button = findWindow(window);
  if (button == nullptr || !isReachable(*button) ||
      (button->kind != WindowKind::Button && button->kind != WindowKind::CheckBox))
    return -1;
  SetFocus(window);
  if (button->kind == WindowKind::CheckBox && isAutoCheckBox(*button))
    button->check = button->check != 0 ? 0 : 1;
  const int id = button->id;
  if (const HWND parent = button->parent)
    SendMessageA(parent, WM_COMMAND, MAKEWPARAM(static_cast<UINT>(id), BN_CLICKED),
                 reinterpret_cast<LPARAM>(window));
  return 0;
}

int pressKey(HWND window, int key) {
  const WindowState *target = findWindow(window);
  if (target == nullptr || !isReachable(*target))
    return -1;
  switch (key) {
  case TUK_KEY_ENTER:
  case TUK_KEY_ESCAPE: {
    SetFocus(window);
    // The dialog manager turns both keys into commands of the dialog that holds the focus.
    const UINT command = key == TUK_KEY_ENTER ? IDOK : IDCANCEL;
    if (const HWND dialog = enclosingDialog(window))
      SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(command, BN_CLICKED), 0);
    return 0;
  }
  case TUK_KEY_F1: {
    SetFocus(window);
    HELPINFO info{};
    info.cbSize = sizeof info;
    info.iContextType = HELPINFO_WINDOW;
    info.iCtrlId = target->id;
    info.hItemHandle = window;
    // Asked of the window itself; windows without help of their own pass it to their parent.
    SendMessageA(window, WM_HELP, 0, reinterpret_cast<LPARAM>(&info));
    return 0;
  }
  default:
    return -1;
  }
}

int resizeWindow(HWND window, int width, int height) {
  const WindowState *state = findWindow(window);
  if (state == nullptr || !isReachable(*state) || !(state->style & WS_THICKFRAME))
    return -1;
  MINMAXINFO limits{};
  limits.ptMaxSize = POINT{kScreenWidth, kScreenHeight};
  limits.ptMinTrackSize = POINT{kMinTrackWidth, kMinTrackHeight};
  limits.ptMaxTrackSize = POINT{kScreenWidth, kScreenHeight};
  SendMessageA(window, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
  state = findWindow(window); // the window's handler may have destroyed it
  if (state == nullptr)
    return -1;
  width = std::max<int>(limits.ptMinTrackSize.x, std::min<int>(width, limits.ptMaxTrackSize.x));
  height = std::max<int>(limits.ptMinTrackSize.y, std::min<int>(height, limits.ptMaxTrackSize.y));
  const RECT rect = state->rect;
  placeWindow(window, RECT{rect.left, rect.top, rect.left + width, rect.top + height});
  return 0;
}

int minimizeWindow(HWND window) {
  WindowState *state = findWindow(window);
  if (state == nullptr || !isReachable(*state) || !(state->style & WS_MINIMIZEBOX) ||
      state->parent != nullptr)
    return -1;
  state->restoredRect = state->rect;
  state->rect = RECT{kMinimizedPosition, kMinimizedPosition, kMinimizedPosition + kMinimizedWidth,
                     kMinimizedPosition + kMinimizedHeight};
  state->style |= WS_MINIMIZE;
  SendMessageA(window, WM_SIZE, SIZE_MINIMIZED, 0);
  return 0;
}

int restoreWindow(HWND window) {
  WindowState *state = findWindow(window);
  if (state == nullptr || !(state->style & WS_MINIMIZE) || !(state->style & WS_VISIBLE))
    return -1;
  state->rect = state->restoredRect;
  state->style &= ~static_cast<DWORD>(WS_MINIMIZE);
  SendMessageA(window, WM_SIZE, SIZE_RESTORED, clientSizeParam(*state));
  return 0;
}
