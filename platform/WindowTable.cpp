// The process-wide table of windows: making, finding and destroying them, their geometry,
// and the keyboard focus.
#include "WindowSystem.h"

#include "Dialogs.h"

#include <algorithm>
#include <map>

namespace {

struct WindowTable {
  std::map<uintptr_t, std::unique_ptr<WindowState>> windows;
  std::vector<HWND> topLevel; // in creation order
  uintptr_t nextHandle = 0x10000;
  HWND focus = nullptr;
};

// Made once and never destroyed: windows that live to the end of the process must not be
// torn down while other libraries' objects may already be gone.
WindowTable &table() {
  static WindowTable *const windows = new WindowTable;
  return *windows;
}

uintptr_t keyOf(HWND window) {
  return reinterpret_cast<uintptr_t>(window);
}

// Rounded as the platform's MulDiv rounds.
int scale(int units, int numerator, int denominator) {
  const long long product = static_cast<long long>(units) * numerator;
  return static_cast<int>(product >= 0 ? (product + denominator / 2) / denominator
                                       : (product - denominator / 2) / denominator);
}

void removeFrom(std::vector<HWND> &list, HWND window) {
  list.erase(std::remove(list.begin(), list.end(), window), list.end());
}

} // namespace

WindowState::WindowState() = default;
WindowState::~WindowState() = default;

HWND createWindow(const WindowCreation &creation) {
  WindowTable &windows = table();
  WindowState *parent = nullptr;
  if (creation.parent != nullptr && (parent = findWindow(creation.parent)) == nullptr)
    return nullptr;
  auto window = std::make_unique<WindowState>();
  window->handle = reinterpret_cast<HWND>(windows.nextHandle++);
  window->kind = creation.kind;
  window->id = creation.id;
  window->text = creation.text != nullptr ? creation.text : "";
  window->rect = creation.rect;
  window->style = creation.style;
  window->exStyle = creation.exStyle;
  window->parent = creation.parent;
  const HWND handle = window->handle;
  if (parent != nullptr)
    parent->children.push_back(handle);
  else
    windows.topLevel.push_back(handle);
  windows.windows.emplace(keyOf(handle), std::move(window));
  return handle;
}

WindowState *findWindow(HWND window) {
  if (window == nullptr)
    return nullptr;
  const auto found = table().windows.find(keyOf(window));
  return found != table().windows.end() ? found->second.get() : nullptr;
}

std::vector<HWND> topLevelWindows() {
  return table().topLevel;
}

BOOL IsWindow(HWND window) {
  return findWindow(window) != nullptr;
}

BOOL DestroyWindow(HWND window) {
  WindowState *state = findWindow(window);
  if (state == nullptr)
    return FALSE;
  // Children first, from a copy: each removes itself from the list.
  for (HWND child : std::vector<HWND>(state->children))
    DestroyWindow(child);
  WindowTable &windows = table();
  if (WindowState *parent = findWindow(state->parent))
    removeFrom(parent->children, window);
  else
    removeFrom(windows.topLevel, window);
  if (windows.focus == window)
    windows.focus = nullptr;
  if (state->object != nullptr)
    state->object->windowDetached();
  // Out of the table before anything is destroyed, so that nothing can find it half gone.
  const auto found = windows.windows.find(keyOf(window));
  const std::unique_ptr<WindowState> gone = std::move(found->second);
  windows.windows.erase(found);
  return TRUE;
}

int dialogUnitsToPixelsX(int units) {
  return scale(units, 6, 4);
}
int dialogUnitsToPixelsY(int units) {
  return scale(units, 13, 8);
}

RECT nonClientInsets(DWORD style) {
  int frame = 0;
  if (style & WS_THICKFRAME)
    frame = 4;
  else if (style & WS_DLGFRAME)
    frame = 3;
  else if (style & WS_BORDER)
    frame = 1;
  RECT insets{frame, frame, frame, frame};
  if ((style & WS_CAPTION) == WS_CAPTION)
    insets.top += 18;
  return insets;
}

RECT screenRect(const WindowState &window) {
  RECT rect = window.rect;
  if (const WindowState *parent = findWindow(window.parent)) {
    const RECT origin = screenClientRect(*parent);
    rect.left += origin.left;
    rect.right += origin.left;
    rect.top += origin.top;
    rect.bottom += origin.top;
  }
  return rect;
}

RECT screenClientRect(const WindowState &window) {
  const RECT outer = screenRect(window);
  const RECT insets = nonClientInsets(window.style);
  RECT client{outer.left + insets.left, outer.top + insets.top, outer.right - insets.right,
              outer.bottom - insets.bottom};
  client.right = std::max(client.right, client.left);
  client.bottom = std::max(client.bottom, client.top);
  return client;
}

LPARAM clientSizeParam(const WindowState &window) {
  const RECT client = screenClientRect(window);
  const auto width = static_cast<uintptr_t>(client.right - client.left) & 0xFFFF;
  const auto height = static_cast<uintptr_t>(client.bottom - client.top) & 0xFFFF;
  return static_cast<LPARAM>(width | (height << 16));
}

void placeWindow(HWND window, RECT rect) {
  WindowState *state = findWindow(window);
  if (state == nullptr)
    return;
  rect.right = std::max(rect.right, rect.left);
  rect.bottom = std::max(rect.bottom, rect.top);
  if (state->style & WS_MINIMIZE) {
    state->restoredRect = rect; // takes effect when the window is restored
    return;
  }
  const bool resized = rect.right - rect.left != state->rect.right - state->rect.left ||
                       rect.bottom - rect.top != state->rect.bottom - state->rect.top;
  state->rect = rect;
  if (resized)
    SendMessageA(window, WM_SIZE, SIZE_RESTORED, clientSizeParam(*state));
}

bool isReachable(const WindowState &window) {
  for (const WindowState *state = &window; state != nullptr; state = findWindow(state->parent)) {
    if (!(state->style & WS_VISIBLE) || (state->style & (WS_DISABLED | WS_MINIMIZE)))
      return false;
  }
  return true;
}

HWND enclosingDialog(HWND window) {
  for (const WindowState *state = findWindow(window); state != nullptr;
       state = findWindow(state->parent)) {
    if (state->kind == WindowKind::Dialog)
      return state->handle;
  }
  return nullptr;
}

const char *windowClassName(WindowKind kind) {
  switch (kind) {
  case WindowKind::Frame:
    return "frame";
  case WindowKind::Dialog:
    return "dialog";
  case WindowKind::Edit:
    return "edit";
  case WindowKind::Button:
    return "button";
  case WindowKind::CheckBox:
    return "checkbox";
  case WindowKind::Static:
    break;
  }
  return "static";
}

HWND SetFocus(HWND window) {
  WindowTable &windows = table();
  const HWND previous = windows.focus;
  if (window == nullptr || IsWindow(window))
    windows.focus = window;
  return previous;
}

HWND GetFocus() {
  return table().focus;
}
