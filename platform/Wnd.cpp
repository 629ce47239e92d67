// CWnd: the class object of a window, its message map and the calls it wraps, the same on
// every platform. How objects are bound to windows: WndBinding.cpp, WndWin32.cpp.
#include "Dialogs.h"

#include <string>

CWnd::CWnd() : moduleState_(AfxGetModuleState()) {}

CWnd::~CWnd() {
  const HWND window = m_hWnd;
  if (window == nullptr)
    return;
  // Let go first, so that nothing reaches this half-destroyed object.
  unbind();
  m_hWnd = nullptr;
  if (ownsWindow_)
    ::DestroyWindow(window);
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
  return defaultHandling(message, wParam, lParam);
}

LRESULT CWnd::Default() {
  return defaultHandling(current_.message, current_.wParam, current_.lParam);
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
  if (!::IsWindow(m_hWnd))
    return;
  std::string buffer(static_cast<size_t>(::GetWindowTextLengthA(m_hWnd)) + 1, '\0');
  const int copied = ::GetWindowTextA(m_hWnd, buffer.data(), static_cast<int>(buffer.size()));
  text = CString(buffer.data(), copied);
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

CWnd *CWnd::SetFocus() {
  return m_hWnd != nullptr ? FromHandle(::SetFocus(m_hWnd)) : nullptr;
}

int CWnd::MessageBoxA(const char *text, const char *caption, UINT type) {
  return ::MessageBoxA(m_hWnd, text, caption, type);
}
