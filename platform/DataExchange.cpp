// Data exchange between a dialog's members and its controls: DDX_Control and DDX_Check.
#include "Dialogs.h"

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
