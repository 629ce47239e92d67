// Controls and data exchange: CButton's check state, DDX_Control and DDX_Check.
#include "Dialogs.h"

// Through the parent, as a dialog asks its controls: the same calls on every platform.
int CButton::GetCheck() const {
  return static_cast<int>(IsDlgButtonChecked(::GetParent(m_hWnd), GetDlgCtrlID(m_hWnd)));
}

void CButton::SetCheck(int check) {
  CheckDlgButton(::GetParent(m_hWnd), GetDlgCtrlID(m_hWnd), check != 0 ? 1 : 0);
}

void DDX_Control(CDataExchange *dx, int id, CWnd &control) {
  if (control.m_hWnd == nullptr)
    control.SubclassDlgItem(static_cast<UINT>(id), dx->m_pDlgWnd);
}

void DDX_Check(CDataExchange *dx, int id, int &value) {
  const HWND dialog = dx->m_pDlgWnd->m_hWnd;
  if (dx->m_bSaveAndValidate)
    value = static_cast<int>(IsDlgButtonChecked(dialog, id));
  else
    CheckDlgButton(dialog, id, static_cast<UINT>(value));
}
