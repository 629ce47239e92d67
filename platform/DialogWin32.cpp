// CDialog on Windows: dialogs of the dialog manager, made from a template of the current
// resource module, whose messages reach the object through the dialog procedure.
#include "WindowBinding.h"

namespace {

thread_local CDialog *pendingDialog = nullptr;

// The module that holds template `id`: the resource module, else, for a language module that
// lacks it, the state's own. Null when neither has it.
HINSTANCE templateModule(UINT id) {
  const HINSTANCE resources = AfxGetResourceHandle();
  if (resources != nullptr && FindResourceA(resources, MAKEINTRESOURCEA(id), RT_DIALOG))
    return resources;
  const HINSTANCE own = AfxGetModuleState()->m_hCurrentInstanceHandle;
  if (own != nullptr && own != resources && FindResourceA(own, MAKEINTRESOURCEA(id), RT_DIALOG))
    return own;
  return nullptr;
}

// Messages whose result the dialog procedure returns itself; every other result goes to the
// dialog manager in DWLP_MSGRESULT.
bool resultIsReturned(UINT message) {
  switch (message) {
  case WM_INITDIALOG:
  case WM_CTLCOLORMSGBOX:
  case WM_CTLCOLOREDIT:
  case WM_CTLCOLORLISTBOX:
  case WM_CTLCOLORBTN:
  case WM_CTLCOLORDLG:
  case WM_CTLCOLORSCROLLBAR:
  case WM_CTLCOLORSTATIC:
  case WM_COMPAREITEM:
  case WM_VKEYTOITEM:
  case WM_CHARTOITEM:
  case WM_QUERYDRAGICON:
    return true;
  default:
    return false;
  }
}

} // namespace

PendingDialog::PendingDialog(CDialog &dialog) : previous_(pendingDialog) {
  pendingDialog = &dialog;
}

PendingDialog::~PendingDialog() {
  pendingDialog = previous_;
}

CDialog *PendingDialog::claim() {
  CDialog *dialog = pendingDialog;
  pendingDialog = nullptr;
  return dialog;
}

INT_PTR CALLBACK WindowBinding::dialogProcedure(HWND dialog, UINT message, WPARAM wParam,
                                                LPARAM lParam) {
  WindowBinding *binding = of(dialog);
  if (binding == nullptr) {
    // The first message of a dialog being made: its object takes it.
    CDialog *object = PendingDialog::claim();
    if (object == nullptr)
      return FALSE;
    static_cast<CWnd *>(object)->attachCreated(dialog);
    binding = of(dialog);
    if (binding == nullptr)
      return FALSE;
  }
  if (message == WM_NCDESTROY) {
    release(dialog);
    return FALSE;
  }
  CWnd *object = binding->object;
  if (object == nullptr)
    return FALSE;
  if (message == WM_SIZE) {
    binding->sized = true;
  } else if (message == WM_INITDIALOG && !binding->sized) {
    // The dialog manager sizes a dialog before its procedure is set; the object gets the
    // first size all the same, before WM_INITDIALOG, as it does everywhere.
    RECT client{};
    GetClientRect(dialog, &client);
    binding->sized = true;
    dispatchToDialog(dialog, *object, WM_SIZE, SIZE_RESTORED,
                     MAKELPARAM(client.right - client.left, client.bottom - client.top));
    binding = of(dialog);
    if (binding == nullptr || binding->object != object)
      return FALSE;
  }
  return dispatchToDialog(dialog, *object, message, wParam, lParam);
}

INT_PTR WindowBinding::dispatchToDialog(HWND dialog, CWnd &object, UINT message, WPARAM wParam,
                                        LPARAM lParam) {
  // A handler may send the dialog more messages: each keeps its own request for the default.
  const bool outerWanted = object.defaultWanted_;
  object.defaultWanted_ = false;
  const LRESULT result = object.handleMessage(message, wParam, lParam);
  const WindowBinding *binding = of(dialog);
  if (binding == nullptr || binding->object != &object)
    return TRUE; // the object or the window went during the message
  const bool wanted = object.defaultWanted_;
  object.defaultWanted_ = outerWanted;
  if (resultIsReturned(message))
    return static_cast<INT_PTR>(result);
  if (wanted)
    return FALSE; // the dialog manager's handling follows
  SetWindowLongPtrA(dialog, DWLP_MSGRESULT, result);
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
  const HINSTANCE module = templateModule(templateId);
  if (module == nullptr)
    return FALSE;
  m_nIDTemplate = templateId;
  m_pParentWnd = parent;
  const PendingDialog pending(*this);
  const HWND window = CreateDialogParamA(
      module, MAKEINTRESOURCEA(templateId), parent != nullptr ? parent->m_hWnd : nullptr,
      &WindowBinding::dialogProcedure, reinterpret_cast<LPARAM>(this));
  return window != nullptr && m_hWnd == window;
}

INT_PTR CDialog::DoModal() {
  if (m_hWnd != nullptr)
    return -1;
  const HINSTANCE module = templateModule(m_nIDTemplate);
  if (module == nullptr)
    return -1;
  modal_ = true;
  const PendingDialog pending(*this);
  // The dialog manager destroys the dialog before it returns; the window lets go of this
  // object as it goes.
  const INT_PTR result =
      DialogBoxParamA(module, MAKEINTRESOURCEA(m_nIDTemplate),
                      m_pParentWnd != nullptr ? m_pParentWnd->m_hWnd : nullptr,
                      &WindowBinding::dialogProcedure, reinterpret_cast<LPARAM>(this));
  modal_ = false;
  return result;
}
