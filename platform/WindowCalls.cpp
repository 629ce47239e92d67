// The Win32 window calls over the window table: texts, rectangles, visibility, check boxes,
// and the sending and default handling of messages.
#include "Dialogs.h"
#include "WindowSystem.h"

#include <algorithm>
#include <cstring>

BOOL IsWindowVisible(HWND window) {
  for (const WindowState *state = findWindow(window); state != nullptr;
       state = findWindow(state->parent)) {
    if (!(state->style & WS_VISIBLE))
      return FALSE;
    if (state->parent == nullptr)
      return TRUE;
  }
  return FALSE;
}

BOOL ShowWindow(HWND window, int command) {
  WindowState *state = findWindow(window);
  if (state == nullptr)
    return FALSE;
  const BOOL wasVisible = (state->style & WS_VISIBLE) ? TRUE : FALSE;
  if (command == SW_HIDE)
    state->style &= ~static_cast<DWORD>(WS_VISIBLE);
  else
    state->style |= WS_VISIBLE;
  return wasVisible;
}

HWND GetParent(HWND window) {
  const WindowState *state = findWindow(window);
  return state != nullptr ? state->parent : nullptr;
}

HWND GetDlgItem(HWND dialog, int id) {
  const WindowState *state = findWindow(dialog);
  if (state == nullptr)
    return nullptr;
  for (HWND child : state->children) {
    if (findWindow(child)->id == id)
      return child;
  }
  return nullptr;
}

int GetDlgCtrlID(HWND window) {
  const WindowState *state = findWindow(window);
  return state != nullptr ? state->id : 0;
}

BOOL CheckDlgButton(HWND dialog, int id, UINT check) {
  WindowState *box = findWindow(GetDlgItem(dialog, id));
  if (box == nullptr || box->kind != WindowKind::CheckBox)
    return FALSE;
  box->check = check != 0 ? 1 : 0;
  return TRUE;
}

UINT IsDlgButtonChecked(HWND dialog, int id) {
  const WindowState *box = findWindow(GetDlgItem(dialog, id));
  return box != nullptr && box->kind == WindowKind::CheckBox ? static_cast<UINT>(box->check) : 0;
}

BOOL SetWindowTextA(HWND window, const char *text) {
  WindowState *state = findWindow(window);
  if (state == nullptr)
    return FALSE;
  state->text = text != nullptr ? text : "";
  return TRUE;
}

int GetWindowTextA(HWND window, char *buffer, int bufferMax) {
  const WindowState *state = findWindow(window);
  if (buffer == nullptr || bufferMax <= 0)
    return 0;
  const size_t count =
      state == nullptr ? 0 : std::min(state->text.size(), static_cast<size_t>(bufferMax) - 1);
  if (count > 0)
    std::memcpy(buffer, state->text.data(), count);
  buffer[count] = '\0';
  return static_cast<int>(count);
}

int GetWindowTextLengthA(HWND window) {
  const WindowState *state = findWindow(window);
  return state != nullptr ? static_cast<int>(state->text.size()) : 0;
}

BOOL GetWindowRect(HWND window, RECT *rect) {
  const WindowState *state = findWindow(window);
  if (state == nullptr || rect == nullptr)
    return FALSE;
  *rect = screenRect(*state);
  return TRUE;
}

BOOL GetClientRect(HWND window, RECT *rect) {
  const WindowState *state = findWindow(window);
  if (state == nullptr || rect == nullptr)
    return FALSE;
  const RECT client = screenClientRect(*state);
  *rect = RECT{0, 0, client.right - client.left, client.bottom - client.top};
  return TRUE;
}

BOOL ScreenToClient(HWND window, POINT *point) {
  const WindowState *state = findWindow(window);
  if (state == nullptr || point == nullptr)
    return FALSE;
  const RECT client = screenClientRect(*state);
  point->x -= client.left;
  point->y -= client.top;
  return TRUE;
}

BOOL ClientToScreen(HWND window, POINT *point) {
  const WindowState *state = findWindow(window);
  if (state == nullptr || point == nullptr)
    return FALSE;
  const RECT client = screenClientRect(*state);
  point->x += client.left;
  point->y += client.top;
  return TRUE;
}

BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL) {
  if (!IsWindow(window))
    return FALSE;
  placeWindow(window, RECT{x, y, x + std::max(width, 0), y + std::max(height, 0)});
  return TRUE;
}

BOOL InvalidateRect(HWND window, const RECT *, BOOL) {
  return IsWindow(window);
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const WindowState *state = findWindow(window);
  if (state == nullptr)
    return 0;
  if (CWnd *object = state->object)
    return object->handleMessage(message, wParam, lParam);
  return DefWindowProcA(window, message, wParam, lParam);
}

LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const WindowState *state = findWindow(window);
  if (state == nullptr)
    return 0;
  switch (message) {
  case WM_CLOSE:
    if (state->kind == WindowKind::Dialog)
      SendMessageA(window, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    else
      DestroyWindow(window);
    return 0;
  case WM_HELP:
    return state->parent != nullptr ? SendMessageA(state->parent, message, wParam, lParam) : 0;
  default:
    return 0;
  }
}
