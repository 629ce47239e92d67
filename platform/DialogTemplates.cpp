// CDialog over the headless window system: a dialog made from a template of the current
// resource module, modeless with Create or modal with DoModal, whose modal loop is the
// process-wide user.
#include "Dialogs.h"
#include "Resources.h"
#include "User.h"
#include "WindowSystem.h"

#include <cstring>
#include <string>

namespace {

WindowKind kindOf(const DialogItem &item) {
  if (std::strcmp(item.className, "EDIT") == 0)
    return WindowKind::Edit;
  if (std::strcmp(item.className, "BUTTON") == 0) {
    switch (item.style & BS_TYPEMASK) {
    case BS_CHECKBOX:
    case BS_AUTOCHECKBOX:
    case BS_3STATE:
    case BS_AUTO3STATE:
      return WindowKind::CheckBox;
    default:
      return WindowKind::Button;
    }
  }
  return WindowKind::Static;
}

RECT pixelRect(int x, int y, int width, int height) {
  const int left = dialogUnitsToPixelsX(x);
  const int top = dialogUnitsToPixelsY(y);
  return RECT{left, top, left + dialogUnitsToPixelsX(width), top + dialogUnitsToPixelsY(height)};
}

// The first control that takes the focus by tabbing, as the dialog manager picks it.
HWND firstTabStop(HWND dialog) {
  const WindowState *state = findWindow(dialog);
  if (state == nullptr)
    return nullptr;
  for (HWND child : state->children) {
    const DWORD style = findWindow(child)->style;
    if ((style & WS_TABSTOP) && (style & WS_VISIBLE) && !(style & WS_DISABLED))
      return child;
  }
  return nullptr;
}

} // namespace

void CDialog::EndDialog(int result) {
  if (modal_) {
    modalEnded_ = true;
    modalResult_ = result;
  } else {
    ShowWindow(SW_HIDE);
  }
}

BOOL CDialog::Create(UINT templateId, CWnd *parent) {
  if (m_hWnd != nullptr)
    return FALSE;
  const DialogTemplate *dialog = findDialog(AfxGetResourceHandle(), templateId);
  if (dialog == nullptr)
    return FALSE;
  m_nIDTemplate = templateId;
  m_pParentWnd = parent;
  return createFromTemplate(*dialog, parent != nullptr ? parent->m_hWnd : nullptr);
}

BOOL CDialog::createFromTemplate(const DialogTemplate &dialog, HWND parent) {
  const bool child = (dialog.style & WS_CHILD) != 0;
  if (child && !IsWindow(parent))
    return FALSE;
  // The template gives the client area; the frame and caption come around it.
  const RECT client = pixelRect(dialog.x, dialog.y, dialog.cx, dialog.cy);
  const RECT insets = nonClientInsets(dialog.style);
  const RECT outer{client.left, client.top, client.right + insets.left + insets.right,
                   client.bottom + insets.top + insets.bottom};
  const HWND window = createWindow(WindowCreation{WindowKind::Dialog, 0, dialog.caption, outer,
                                                  dialog.style & ~static_cast<DWORD>(WS_VISIBLE),
                                                  dialog.exStyle, child ? parent : nullptr});
  if (window == nullptr)
    return FALSE;
  attachCreated(window);

  // As the platform does: the first size message comes before the controls and before
  // WM_INITDIALOG.
  SendMessageA(window, WM_SIZE, SIZE_RESTORED, clientSizeParam(*findWindow(window)));
  for (uint32_t i = 0; i < dialog.itemCount && IsWindow(window); ++i) {
    const DialogItem &item = dialog.items[i];
    createWindow(WindowCreation{kindOf(item), item.id, item.text,
                                pixelRect(item.x, item.y, item.cx, item.cy), item.style,
                                item.exStyle, window});
  }
  const LRESULT focusFirstControl = SendMessageA(window, WM_INITDIALOG, 0, 0);
  if (!IsWindow(window) || m_hWnd != window)
    return FALSE;
  if (focusFirstControl != 0) {
    if (const HWND first = firstTabStop(window))
      ::SetFocus(first);
  }
  if (dialog.style & WS_VISIBLE)
    ::ShowWindow(window, SW_SHOW);
  return TRUE;
}

INT_PTR CDialog::DoModal() {
  if (m_hWnd != nullptr)
    return -1;
  const DialogTemplate *dialog = findDialog(AfxGetResourceHandle(), m_nIDTemplate);
  if (dialog == nullptr)
    return -1;
  if (!userInstalled())
    return IDCANCEL; // nobody to show it to
  modal_ = true;
  modalEnded_ = false;
  modalResult_ = IDCANCEL;
  if (!createFromTemplate(*dialog, m_pParentWnd != nullptr ? m_pParentWnd->m_hWnd : nullptr)) {
    DestroyWindow();
    modal_ = false;
    return -1;
  }
  const HWND window = m_hWnd;
  if (!modalEnded_) {
    const std::string title = findWindow(window)->text;
    TukUserEvent event{};
    event.kind = TUK_USER_MODAL_DIALOG;
    event.window = reinterpret_cast<TukWindow>(window);
    event.text = title.c_str();
    event.caption = "";
    bool answered = false;
    askUser(event, answered);
  }
  // A person who walks away from the dialog closes it.
  if (!modalEnded_ && IsWindow(window))
    SendMessageA(window, WM_CLOSE, 0, 0);
  const int result = modalEnded_ ? modalResult_ : IDCANCEL;
  DestroyWindow();
  modal_ = false;
  return result;
}
