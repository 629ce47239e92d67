// CWnd and CButton bound to the headless window system: which object a window has, and the
// calls that read the window state directly.
#include "Dialogs.h"
#include "WindowSystem.h"

#include <algorithm>

CWnd::~CWnd() {
  const HWND window = m_hWnd;
  if (window == nullptr)
    return;
  // Detached first, so that nothing reaches this half-destroyed object.
  if (WindowState *state = findWindow(window); state != nullptr && state->object == this)
    state->object = nullptr;
  m_hWnd = nullptr;
  if (ownsWindow_)
    ::DestroyWindow(window);
}

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

void CWnd::GetWindowTextA(CString &text) const {
  // Without a window the string keeps what it held: a page whose window the host destroyed
  // then stores what it loaded, never empty values.
  if (const WindowState *state = findWindow(m_hWnd))
    text = state->text.c_str();
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

int CButton::GetCheck() const {
  const WindowState *state = findWindow(m_hWnd);
  return state != nullptr && state->kind == WindowKind::CheckBox ? state->check : 0;
}

void CButton::SetCheck(int check) {
  WindowState *state = findWindow(m_hWnd);
  if (state != nullptr && state->kind == WindowKind::CheckBox)
    state->check = check != 0 ? 1 : 0;
}
