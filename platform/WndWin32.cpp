// CWnd on Windows: objects bound to the system's windows (WindowBinding), the objects that
// FromHandle makes for windows nobody owns, and centring.
#include "WindowBinding.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>

namespace {

constexpr char kBindingProperty[] = "tuk.WindowBinding";

// The objects FromHandle made. A window is not subclassed for its temporary object, since
// windows nobody owns may outlive this library (a host's frame); an object is freed when a
// later call finds its window gone, or when the library goes.
class TemporaryObjects {
public:
  CWnd *forWindow(HWND window) {
    const std::lock_guard<std::mutex> lock(mutex_);
    dropDeadWindows();
    std::unique_ptr<CWnd> &object = objects_[window];
    // One that let go of its window for a subclassing object is replaced.
    if (!object || object->m_hWnd != window) {
      object = std::make_unique<CWnd>();
      object->m_hWnd = window;
    }
    return object.get();
  }
  // The window's temporary object, if any, lets go of it (for an object that subclasses the
  // window); it lives on until the window goes, as pointers to it may be held.
  void detach(HWND window) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (const auto found = objects_.find(window); found != objects_.end())
      found->second->windowDetached();
  }

private:
  void dropDeadWindows() {
    for (auto it = objects_.begin(); it != objects_.end();)
      it = IsWindow(it->first) ? std::next(it) : objects_.erase(it);
  }

  std::mutex mutex_;
  std::map<HWND, std::unique_ptr<CWnd>> objects_;
};

TemporaryObjects &temporaryObjects() {
  static TemporaryObjects objects;
  return objects;
}

} // namespace

WindowBinding *WindowBinding::of(HWND window) {
  return window != nullptr ? static_cast<WindowBinding *>(GetPropA(window, kBindingProperty))
                           : nullptr;
}

WindowBinding *WindowBinding::make(HWND window) {
  auto binding = std::make_unique<WindowBinding>();
  if (!SetPropA(window, kBindingProperty, binding.get()))
    return nullptr;
  return binding.release(); // the window's now, until release()
}

void WindowBinding::release(HWND window) {
  const std::unique_ptr<WindowBinding> binding(of(window));
  if (!binding)
    return;
  RemovePropA(window, kBindingProperty);
  if (binding->object != nullptr)
    binding->object->windowDetached();
}

WindowBinding *WindowBinding::subclass(HWND window) {
  WindowBinding *binding = make(window);
  if (binding == nullptr)
    return nullptr;
  binding->replaced = reinterpret_cast<WNDPROC>(SetWindowLongPtrA(
      window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&WindowBinding::windowProcedure)));
  if (binding->replaced == nullptr) {
    release(window);
    return nullptr;
  }
  return binding;
}

void WindowBinding::unsubclass(HWND window) {
  WindowBinding *binding = of(window);
  if (binding == nullptr)
    return;
  binding->object = nullptr;
  const auto ours = reinterpret_cast<LONG_PTR>(&WindowBinding::windowProcedure);
  if (GetWindowLongPtrA(window, GWLP_WNDPROC) != ours)
    return; // a procedure set after ours calls it: it stays and hands messages on
  SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(binding->replaced));
  release(window);
}

LRESULT CALLBACK WindowBinding::windowProcedure(HWND window, UINT message, WPARAM wParam,
                                                LPARAM lParam) {
  const WindowBinding *binding = of(window);
  if (binding == nullptr)
    return DefWindowProcA(window, message, wParam, lParam);
  const WNDPROC replaced = binding->replaced;
  const LRESULT result = binding->object != nullptr
                             ? binding->object->handleMessage(message, wParam, lParam)
                             : CallWindowProcA(replaced, window, message, wParam, lParam);
  if (message == WM_NCDESTROY)
    release(window); // looked up again: the handler may have let go of the window
  return result;
}

CWnd *CWnd::FromHandle(HWND window) {
  if (!IsWindow(window))
    return nullptr;
  if (const WindowBinding *binding = WindowBinding::of(window);
      binding != nullptr && binding->object != nullptr)
    return binding->object;
  return temporaryObjects().forWindow(window);
}

void CWnd::attachCreated(HWND window) {
  WindowBinding *binding = WindowBinding::make(window);
  if (binding == nullptr)
    return;
  binding->object = this;
  binding->throughDialogProcedure = true; // the only windows objects make are dialogs
  m_hWnd = window;
  ownsWindow_ = true;
}

void CWnd::unbind() {
  WindowBinding *binding = WindowBinding::of(m_hWnd);
  if (binding == nullptr || binding->object != this)
    return;
  if (binding->throughDialogProcedure)
    binding->object = nullptr;
  else
    WindowBinding::unsubclass(m_hWnd);
}

BOOL CWnd::SubclassDlgItem(UINT id, CWnd *parent) {
  if (m_hWnd != nullptr || parent == nullptr)
    return FALSE;
  const HWND control = ::GetDlgItem(parent->m_hWnd, static_cast<int>(id));
  if (control == nullptr)
    return FALSE;
  WindowBinding *binding = WindowBinding::of(control);
  if (binding != nullptr && binding->object != nullptr)
    return FALSE; // another object has it
  if (binding == nullptr)
    binding = WindowBinding::subclass(control);
  if (binding == nullptr)
    return FALSE;
  temporaryObjects().detach(control);
  binding->object = this;
  m_hWnd = control;
  ownsWindow_ = false;
  return TRUE;
}

LRESULT CWnd::defaultHandling(UINT message, WPARAM wParam, LPARAM lParam) {
  const WindowBinding *binding = WindowBinding::of(m_hWnd);
  if (binding == nullptr || binding->object != this)
    return ::DefWindowProcA(m_hWnd, message, wParam, lParam);
  if (binding->throughDialogProcedure) {
    defaultWanted_ = true; // the dialog manager does it when the dialog procedure returns
    return 0;
  }
  return CallWindowProcA(binding->replaced, m_hWnd, message, wParam, lParam);
}

void CWnd::CenterWindow(CWnd *) {
  RECT rect;
  if (!::GetWindowRect(m_hWnd, &rect))
    return;
  const bool child = (GetWindowLongA(m_hWnd, GWL_STYLE) & WS_CHILD) != 0;
  RECT area{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
  if (child)
    ::GetClientRect(::GetParent(m_hWnd), &area);
  const int width = rect.right - rect.left;
  const int height = rect.bottom - rect.top;
  int left = area.left + (area.right - area.left - width) / 2;
  int top = area.top + (area.bottom - area.top - height) / 2;
  if (!child) {
    // A top-level window keeps its caption on the screen.
    left = std::max(left, 0);
    top = std::max(top, 0);
  }
  SetWindowPos(m_hWnd, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}
