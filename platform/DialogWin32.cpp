// CDialog over the dialog manager: a dialog made from a template of the current resource
// module (or, when a language module lacks it, of the state's own module), modeless with
// Create or modal with DoModal.
#include "WndWin32.h"

namespace {

// The module whose template `id` is used: the resource module, else the state's own.
HINSTANCE templateModule(UINT id) {
  const HINSTANCE resources = AfxGetResourceHandle();
  if (resources != nullptr && FindResourceA(resources, MAKEINTRESOURCEA(id), RT_DIALOG) != nullptr)
    return resources;
  return AfxGetModuleState()->m_hCurrentInstanceHandle;
}

} // namespace

INT_PTR CALLBACK CDialog::dialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_INITDIALOG) {
    auto *dialog = reinterpret_cast<CDialog *>(lParam);
    dialog->attachCreated(window);
    return dialog->handleMessage(WM_INITDIALOG, wParam, 0);
  }
  if (message == WM_NCDESTROY) {
    detachObject(window);
    return FALSE;
  }
  CWnd *object = attachedObject(window);
  if (object == nullptr || findMessageEntry(object->GetMessageMap(), message, wParam) == nullptr)
    return FALSE; // the dialog manager's own handling
  SetWindowLongPtrA(window, DWLP_MSGRESULT, object->handleMessage(message, wParam, lParam));
  return TRUE;
}

void CDialog::EndDialog(int result) {
  if (modal_)
    ::EndDialog(m_hWnd, result);
  else
    ShowWindow(SW_HIDE);
}

BOOL CDialog::Create(UINT templateId, CWnd *parent) {
  if (m_hWnd != nullptr)
    return FALSE;
  m_nIDTemplate = templateId;
  m_pParentWnd = parent;
  return CreateDialogParamA(templateModule(templateId), MAKEINTRESOURCEA(templateId),
                            parent != nullptr ? parent->m_hWnd : nullptr, dialogProc,
                            reinterpret_cast<LPARAM>(this)) != nullptr;
}

INT_PTR CDialog::DoModal() {
  if (m_hWnd != nullptr)
    return -1;
  modal_ = true;
  const INT_PTR result =
      DialogBoxParamA(templateModule(m_nIDTemplate), MAKEINTRESOURCEA(m_nIDTemplate),
                      m_pParentWnd != nullptr ? m_pParentWnd->m_hWnd : nullptr, dialogProc,
                      reinterpret_cast<LPARAM>(this));
  modal_ = false;
  return result;
}
