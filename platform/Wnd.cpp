// CWnd: the class object of a window, its message map and the calls it wraps.
#include "Dialogs.h"
#include "WindowSystem.h"

#include <algorithm>

CWnd::CWnd() : moduleState_(AfxGetModuleState()) {}

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

const MessageMap *CWnd::GetMessageMap() const {
  static const MessageMap map = {nullptr, nullptr, 0};
  return &map;
}

LRESULT CWnd::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  AFX_MAINTAIN_STATE moduleState(moduleState_);
  const Message outer = current_;
  current_ = Message{message, wParam, lParam};
  const LRESULT result = WindowProc(message, wParam, lParam);
  current_ = outer;
  return result;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  for (const MessageMap *map = GetMessageMap(); map != nullptr; map = map->base) {
    for (size_t i = 0; i < map->count; ++i) {
      const MessageMapEntry &entry = map->entries[i];
      if (entry.message != message)
        continue;
      if (message == WM_COMMAND && (entry.id != LOWORD(wParam) || HIWORD(wParam) != BN_CLICKED))
        continue;
      return entry.handler(*this, wParam, lParam);
    }
  }
  return ::DefWindowProcA(m_hWnd, message, wParam, lParam);
}

LRESULT CWnd::Default() {
  return ::DefWindowProcA(m_hWnd, current_.message, current_.wParam, current_.lParam);
}

void CWnd::DoDataExchange(CDataExchange *) {}

BOOL CWnd::UpdateData(BOOL saveAndValidate) {
  CDataExchange exchange(this, saveAndValidate);
  DoDataExchange(&exchange);
  return TRUE;
}

BOOL CWnd::DestroyWindow() {
  const HWND window = m_hWnd;
  return window != nullptr ? ::DestroyWindow(window) : FALSE;
}

BOOL CWnd::ShowWindow(int command) {
  return ::ShowWindow(m_hWnd, command);
}

CWnd *CWnd::GetDlgItem(int id) const {
  return FromHandle(::GetDlgItem(m_hWnd, id));
}

void CWnd::SetWindowTextA(const char *text) {
  ::SetWindowTextA(m_hWnd, text);
}

void CWnd::GetWindowTextA(CString &text) const {
  // Without a window the string keeps what it held: a page whose window the host destroyed
  // then stores what it loaded, never empty values.
  if (const WindowState *state = findWindow(m_hWnd))
    text = state->text.c_str();
}

void CWnd::GetWindowRect(RECT *rect) const {
  if (!::GetWindowRect(m_hWnd, rect) && rect != nullptr)
    *rect = RECT{};
}

void CWnd::GetClientRect(RECT *rect) const {
  if (!::GetClientRect(m_hWnd, rect) && rect != nullptr)
    *rect = RECT{};
}

void CWnd::ScreenToClient(POINT *point) const {
  ::ScreenToClient(m_hWnd, point);
}

void CWnd::ScreenToClient(RECT *rect) const {
  if (rect == nullptr)
    return;
  POINT topLeft{rect->left, rect->top};
  POINT bottomRight{rect->right, rect->bottom};
  ::ScreenToClient(m_hWnd, &topLeft);
  ::ScreenToClient(m_hWnd, &bottomRight);
  *rect = RECT{topLeft.x, topLeft.y, bottomRight.x, bottomRight.y};
}

void CWnd::MoveWindow(int x, int y, int width, int height, BOOL repaint) {
  ::MoveWindow(m_hWnd, x, y, width, height, repaint);
}

void CWnd::InvalidateRect(const RECT *rect, BOOL erase) {
  ::InvalidateRect(m_hWnd, rect, erase);
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

CWnd *CWnd::SetFocus() {
  return m_hWnd != nullptr ? FromHandle(::SetFocus(m_hWnd)) : nullptr;
}

int CWnd::MessageBoxA(const char *text, const char *caption, UINT type) {
  return ::MessageBoxA(m_hWnd, text, caption, type);
}
