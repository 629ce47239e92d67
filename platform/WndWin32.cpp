// CWnd's binding to real windows: which object a window has, the window procedure of a
// control an object took over, and the calls that read the window's state.
#include "WndWin32.h"

#include <algorithm>
#include <map>
#include <memory>

namespace {

// Windows belong to the thread that made them, and the agent's calls come one at a time, so
// the tables are only ever used from one thread at a time.
std::map<HWND, CWnd *> &attached() {
  static std::map<HWND, CWnd *> objects;
  return objects;
}

// Objects FromHandle made for windows that no object has; they go with their window.
std::map<HWND, std::unique_ptr<CWnd>> &temporaries() {
  static std::map<HWND, std::unique_ptr<CWnd>> objects;
  return objects;
}

// The procedures that SubclassDlgItem replaced, by control.
std::map<HWND, WNDPROC> &replacedProcedures() {
  static std::map<HWND, WNDPROC> procedures;
  return procedures;
}

LRESULT CALLBACK subclassedProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const auto replaced = replacedProcedures().find(window);
  const WNDPROC previous = replaced != replacedProcedures().end() ? replaced->second : nullptr;
  if (message == WM_NCDESTROY) {
    detachObject(window);
    SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
    replacedProcedures().erase(window);
  } else if (CWnd *object = attachedObject(window);
             object != nullptr && findMessageEntry(object->GetMessageMap(), message, wParam)) {
    return object->handleMessage(message, wParam, lParam);
  }
  return previous != nullptr ? CallWindowProcA(previous, window, message, wParam, lParam)
                             : DefWindowProcA(window, message, wParam, lParam);
}

} // namespace

CWnd *attachedObject(HWND window) {
  const auto found = attached().find(window);
  return found != attached().end() ? found->second : nullptr;
}

void detachObject(HWND window) {
  if (CWnd *object = attachedObject(window))
    object->windowDetached();
  attached().erase(window);
  temporaries().erase(window);
}

CWnd::~CWnd() {
  const HWND window = m_hWnd;
  if (window == nullptr)
    return;
  // Detached first, so that nothing reaches this half-destroyed object.
  if (attachedObject(window) == this)
    attached().erase(window);
  m_hWnd = nullptr;
  if (ownsWindow_)
    ::DestroyWindow(window);
}

CWnd *CWnd::FromHandle(HWND window) {
  if (window == nullptr || !IsWindow(window))
    return nullptr;
  if (CWnd *object = attachedObject(window))
    return object;
  std::unique_ptr<CWnd> &temporary = temporaries()[window];
  if (!temporary) {
    temporary = std::make_unique<CWnd>();
    temporary->m_hWnd = window;
  }
  return temporary.get();
}

void CWnd::attachCreated(HWND window) {
  temporaries().erase(window);
  attached()[window] = this;
  m_hWnd = window;
  ownsWindow_ = true;
}

BOOL CWnd::SubclassDlgItem(UINT id, CWnd *parent) {
  if (m_hWnd != nullptr || parent == nullptr)
    return FALSE;
  const HWND control = ::GetDlgItem(parent->m_hWnd, static_cast<int>(id));
  if (control == nullptr || attachedObject(control) != nullptr)
    return FALSE; // no such control, or another object has it
  if (const auto temporary = temporaries().find(control); temporary != temporaries().end()) {
    temporary->second->windowDetached();
    temporaries().erase(temporary);
  }
  attached()[control] = this;
  m_hWnd = control;
  ownsWindow_ = false;
  replacedProcedures()[control] = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrA(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&subclassedProcedure)));
  return TRUE;
}

void CWnd::GetWindowTextA(CString &text) const {
  // Without a window the string keeps what it held: a page whose window the host destroyed
  // then stores what it loaded, never empty values.
  if (m_hWnd == nullptr || !IsWindow(m_hWnd))
    return;
  std::string bytes(static_cast<size_t>(::GetWindowTextLengthA(m_hWnd)) + 1, '\0');
  const int length = ::GetWindowTextA(m_hWnd, bytes.data(), static_cast<int>(bytes.size()));
  text = CString(bytes.data(), std::max(length, 0));
}

void CWnd::CenterWindow(CWnd *) {
  RECT rect;
  if (m_hWnd == nullptr || !::GetWindowRect(m_hWnd, &rect))
    return;
  const HWND parent = ::GetParent(m_hWnd);
  const bool child = (GetWindowLongPtrA(m_hWnd, GWL_STYLE) & WS_CHILD) != 0;
  RECT area{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
  if (parent != nullptr)
    ::GetWindowRect(parent, &area);
  const int width = rect.right - rect.left;
  const int height = rect.bottom - rect.top;
  POINT at{area.left + (area.right - area.left - width) / 2,
           area.top + (area.bottom - area.top - height) / 2};
  if (child)
    ::ScreenToClient(parent, &at);
  else
    at = POINT{std::max(at.x, LONG{0}), std::max(at.y, LONG{0})}; // the caption stays on screen
  ::MoveWindow(m_hWnd, at.x, at.y, width, height, TRUE);
}

int CButton::GetCheck() const {
  return m_hWnd != nullptr && SendMessageA(m_hWnd, BM_GETCHECK, 0, 0) == BST_CHECKED ? 1 : 0;
}

void CButton::SetCheck(int check) {
  if (m_hWnd != nullptr)
    SendMessageA(m_hWnd, BM_SETCHECK, check != 0 ? BST_CHECKED : BST_UNCHECKED, 0);
}
