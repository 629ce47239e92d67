// Controls and data exchange: CButton's check state, DDX_Control and DDX_Check.
#include "Dialogs.h"
#include "WindowSystem.h"

int CButton::GetCheck() const {
  const WindowState *state = findWindow(m_hWnd);
  return state != nullptr && state->kind == WindowKind::CheckBox ? state->check : 0;
}

void CButton::SetCheck(int check) {
  WindowState *state = findWindow(m_hWnd);
  if (state != nullptr && state->kind == WindowKind::CheckBox)
    state->check = check != 0 ? 1 : 0;
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
