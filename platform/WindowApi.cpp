// The host's C API over the window system (see WindowApi.h for the contract).
#include "WindowApi.h"

#include "WindowSystem.h"

#include <algorithm>
#include <cstring>

namespace {

HWND toWindow(TukWindow window) {
  return reinterpret_cast<HWND>(window);
}
TukWindow toHandle(HWND window) {
  return reinterpret_cast<TukWindow>(window);
}

TukRect toTukRect(const RECT &rect) {
  return TukRect{rect.left, rect.top, rect.right, rect.bottom};
}

// The frame a host makes: a sizable top-level window with a caption and a close box.
constexpr DWORD kFrameStyle = WS_POPUP | WS_VISIBLE | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME;

} // namespace

TukWindow tukFrameCreate(const char *title, int32_t clientWidth, int32_t clientHeight) {
  const RECT insets = nonClientInsets(kFrameStyle);
  const RECT outer{0, 0, insets.left + std::max(clientWidth, 0) + insets.right,
                   insets.top + std::max(clientHeight, 0) + insets.bottom};
  const HWND frame = createWindow(WindowCreation{
      WindowKind::Frame, 0, title != nullptr ? title : "", outer, kFrameStyle, 0, nullptr});
  if (WindowState *state = findWindow(frame))
    state->hostFrame = true;
  return toHandle(frame);
}

int32_t tukFrameDestroy(TukWindow frame) {
  const WindowState *state = findWindow(toWindow(frame));
  if (state == nullptr || !state->hostFrame)
    return -1;
  DestroyWindow(toWindow(frame));
  return 0;
}

TukWindow tukWindowFindChild(TukWindow parent, int32_t id) {
  return toHandle(GetDlgItem(toWindow(parent), id));
}

int32_t tukWindowChildren(TukWindow parent, TukWindow *children, int32_t capacity) {
  std::vector<HWND> list;
  if (parent == 0) {
    list = topLevelWindows();
  } else if (const WindowState *state = findWindow(toWindow(parent))) {
    list = state->children;
  } else {
    return -1;
  }
  if (children != nullptr) {
    const size_t count = std::min(list.size(), static_cast<size_t>(std::max(capacity, 0)));
    for (size_t i = 0; i < count; ++i)
      children[i] = toHandle(list[i]);
  }
  return static_cast<int32_t>(list.size());
}

int32_t tukWindowGetInfo(TukWindow window, TukWindowInfo *info) {
  const WindowState *state = findWindow(toWindow(window));
  if (state == nullptr || info == nullptr)
    return -1;
  *info = TukWindowInfo{};
  info->id = state->id;
  info->windowClass = windowClassName(state->kind);
  info->style = state->style;
  info->rect = toTukRect(screenRect(*state));
  info->client = toTukRect(screenClientRect(*state));
  info->visible = IsWindowVisible(state->handle) ? 1 : 0;
  info->enabled = (state->style & WS_DISABLED) ? 0 : 1;
  info->minimized = (state->style & WS_MINIMIZE) ? 1 : 0;
  info->focused = GetFocus() == state->handle ? 1 : 0;
  info->checked = state->kind == WindowKind::CheckBox ? state->check : -1;
  info->parent = toHandle(state->parent);
  return 0;
}

int32_t tukWindowGetText(TukWindow window, char *buffer, int32_t capacity) {
  const WindowState *state = findWindow(toWindow(window));
  if (state == nullptr)
    return -1;
  if (buffer != nullptr && capacity > 0) {
    const size_t count = std::min(state->text.size(), static_cast<size_t>(capacity) - 1);
    std::memcpy(buffer, state->text.data(), count);
    buffer[count] = '\0';
  }
  return static_cast<int32_t>(state->text.size());
}

int32_t tukWindowSetText(TukWindow window, const char *text) {
  return SetWindowTextA(toWindow(window), text != nullptr ? text : "") ? 0 : -1;
}

int32_t tukWindowSetCheck(TukWindow checkBox, int32_t checked) {
  WindowState *state = findWindow(toWindow(checkBox));
  if (state == nullptr || state->kind != WindowKind::CheckBox)
    return -1;
  state->check = checked != 0 ? 1 : 0;
  return 0;
}

int32_t tukWindowClick(TukWindow button) {
  return clickWindow(toWindow(button));
}

int32_t tukWindowShow(TukWindow window, int32_t show) {
  if (!IsWindow(toWindow(window)))
    return -1;
  ShowWindow(toWindow(window), show != 0 ? SW_SHOW : SW_HIDE);
  return 0;
}

int32_t tukWindowFocus(TukWindow window) {
  const WindowState *state = findWindow(toWindow(window));
  if (state == nullptr || !isReachable(*state))
    return -1;
  SetFocus(state->handle);
  return 0;
}

TukWindow tukWindowFocused(void) {
  return toHandle(GetFocus());
}

int32_t tukWindowPlace(TukWindow window, int32_t x, int32_t y, int32_t width, int32_t height) {
  return MoveWindow(toWindow(window), x, y, width, height, TRUE) ? 0 : -1;
}

int32_t tukWindowResize(TukWindow window, int32_t width, int32_t height) {
  return resizeWindow(toWindow(window), width, height);
}

int32_t tukWindowMinimize(TukWindow window) {
  return minimizeWindow(toWindow(window));
}

int32_t tukWindowRestore(TukWindow window) {
  return restoreWindow(toWindow(window));
}

int32_t tukWindowClose(TukWindow window) {
  const WindowState *state = findWindow(toWindow(window));
  if (state == nullptr || state->parent != nullptr || !(state->style & WS_SYSMENU) ||
      !isReachable(*state))
    return -1;
  SendMessageA(state->handle, WM_CLOSE, 0, 0);
  return 0;
}

int32_t tukWindowPressKey(TukWindow window, int32_t key) {
  return pressKey(toWindow(window), key);
}
