// CDialog: the handlers of a dialog's OK and Cancel and its first show, the same on every
// platform. How a dialog is made and ended: DialogTemplates.cpp, DialogWin32.cpp.
#include "Dialogs.h"

#include <iterator>

CDialog::CDialog() = default;

CDialog::CDialog(UINT templateId, CWnd *parent) : m_nIDTemplate(templateId), m_pParentWnd(parent) {}

CDialog::~CDialog() = default;

const MessageMap *CDialog::GetMessageMap() const {
  static const MessageMapEntry entries[] = {
      initDialogEntry<&CDialog::OnInitDialog>(),
      commandEntry<&CDialog::OnOK>(IDOK),
      commandEntry<&CDialog::OnCancel>(IDCANCEL),
  };
  static const MessageMap map = {CWnd::GetMessageMap(), entries, std::size(entries)};
  return &map;
}

BOOL CDialog::OnInitDialog() {
  UpdateData(FALSE);
  return TRUE;
}

void CDialog::OnOK() {
  UpdateData(TRUE);
  EndDialog(IDOK);
}

void CDialog::OnCancel() {
  EndDialog(IDCANCEL);
}
