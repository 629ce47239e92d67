// CWnd over the headless window system: a window's state names the object that gets its
// messages, and holds the one FromHandle made when no object had it.
#include "Dialogs.h"
#include "WindowSystem.h"

#include <algorithm>

CWnd *CWnd::FromHandle(HWND window) {
  WindowState *state = findWindow(window);
  if (state == nullptr)
    return nullptr;
  if (state->object == nullptr) {
    state->ownObject = std::make_unique<CWnd>();
    state->ownObject->m_hWnd = window;
    state->object = state->ownObject.get();
  }
  return state->object;
}

void CWnd::attachCreated(HWND window) {
  WindowState *state = findWindow(window);
  if (state == nullptr)
    return;
  state->object = this;
  m_hWnd = window;
  ownsWindow_ = true;
}

void CWnd::unbind() {
  if (WindowState *state = findWindow(m_hWnd); state != nullptr && state->object == this)
    state->object = nullptr;
}

BOOL CWnd::SubclassDlgItem(UINT id, CWnd *parent) {
  if (m_hWnd != nullptr || parent == nullptr)
    return FALSE;
  const HWND control = ::GetDlgItem(parent->m_hWnd, static_cast<int>(id));
  WindowState *state = findWindow(control);
  if (state == nullptr)
    return FALSE;
  if (state->object != nullptr) {
    if (state->object != state->ownObject.get())
      return FALSE; // another object has it
    state->ownObject->windowDetached();
  }
  state->object = this;
  m_hWnd = control;
  ownsWindow_ = false;
  return TRUE;
}

LRESULT CWnd::defaultHandling(UINT message, WPARAM wParam, LPARAM lParam) {
  return ::DefWindowProcA(m_hWnd, message, wParam, lParam);
}

void CWnd::CenterWindow(CWnd *) {
  const WindowState *state = findWindow(m_hWnd);
  if (state == nullptr)
    return;
  RECT area{0, 0, kScreenWidth, kScreenHeight};
  if (state->parent != nullptr)
    ::GetClientRect(state->parent, &area);
  const RECT rect = state->rect;
  const int width = rect.right - rect.left;
  const int height = rect.bottom - rect.top;
  int left = area.left + (area.right - area.left - width) / 2;
  int top = area.top + (area.bottom - area.top - height) / 2;
  if (state->parent == nullptr) {
    // A top-level window keeps its caption on the screen.
    left = std::max(left, 0);
    top = std::max(top, 0);
  }
  placeWindow(m_hWnd, RECT{left, top, left + width, top + height});
}
