// CClientPropPage: the client pages' fields, Browse buttons, check step and help.
#include "settings/ClientPropPage.h"

#include "platform/Help.h"
#include "resources/resource.h"
#include "settings/SettingsCheck.h"
#include "store/MFNList.h"

#include <iterator>

CClientPropPage::CClientPropPage(const PageTraits &traits, CWnd *parent)
    : CPropPage(traits.templateId, parent), traits_(traits) {}

CClientPropPage::~CClientPropPage() = default;

const MessageMap *CClientPropPage::GetMessageMap() const {
  static const MessageMapEntry entries[] = {
      commandEntry<&CClientPropPage::onBrowseMail>(IDC_BROWSE_MAIL),
      commandEntry<&CClientPropPage::onBrowseExe>(IDC_BROWSE_EXE),
      helpEntry<&CClientPropPage::onHelpInfo>(),
  };
  static const MessageMap map = {CPropPage::GetMessageMap(), entries, std::size(entries)};
  return &map;
}

void CClientPropPage::DoDataExchange(CDataExchange *dx) {
  if (traits_.attachBox)
    DDX_Check(dx, IDC_ATTACH_CHECK, attach);
  DDX_Control(dx, IDC_MAIL_EDIT, mailEdit);
  DDX_Control(dx, IDC_EXE_EDIT, exeEdit);
}

BOOL CClientPropPage::OnInitDialog() {
  CPropPage::OnInitDialog(); // the data exchange puts the loaded flag into the box
  mailEdit.SetWindowTextA(mailPath);
  exeEdit.SetWindowTextA(exePath);
  if (traits_.attachBox)
    attach = 0;
  return 1;
}

void CClientPropPage::setInitialFocus() {
  mailEdit.SetFocus();
}

void CClientPropPage::onBrowseMail() {
  CString chosen;
  if (browseForMail(traits_.mailPickerTitleId, chosen) == 1)
    mailEdit.SetWindowTextA(chosen);
}

void CClientPropPage::onBrowseExe() {
  CString chosen;
  if (browseForExe(traits_.exePickerTitleId, chosen) == 1)
    exeEdit.SetWindowTextA(chosen);
}

BOOL CClientPropPage::onHelpInfo(HELPINFO *info) {
  const CWinApp *app = AfxGetApp();
  WinHelpA(static_cast<HWND>(info->hItemHandle), app != nullptr ? app->m_pszHelpFilePath : nullptr,
           HELP_WM_HELP, reinterpret_cast<ULONG_PTR>(traits_.helpTable));
  return 0;
}

UINT CClientPropPage::warningTextId(int state) const {
  switch (state) {
  case kProgramDirMissing:
    return traits_.noExeDirTextId;
  case kProgramMissing:
    return traits_.noExeTextId;
  case kMailDirMissing:
    return traits_.noMailDirTextId;
  case kProgramDirMissing | kMailDirMissing:
    return traits_.noBothDirsTextId;
  default:
    return traits_.noMailNoExeTextId;
  }
}

int32_t CClientPropPage::Validate(int32_t commit) {
  mailEdit.GetWindowTextA(mailPath);
  exeEdit.GetWindowTextA(exePath);
  if (commit != 0)
    return 1;
  UpdateData(TRUE); // on Eudora's page the one place where `attach` takes the box's state

  CString candidates[PageTraits::kProgramNames];
  int candidateCount = 0;
  for (const UINT nameId : traits_.programNameIds) {
    if (nameId == 0)
      continue;
    CString programName;
    programName.LoadString(nameId);
    candidates[candidateCount++] = exePath + kPathSeparator + programName;
  }
  const int state = checkSettings(exePath, candidates, candidateCount, mailPath);
  if (state == 0)
    return 1;

  CString text, caption;
  text.LoadString(warningTextId(state));
  caption.LoadString(traits_.captionId);
  // A question: Retry sends the user back to the fields, Cancel takes the values as they are.
  return MessageBoxA(text, caption, MB_RETRYCANCEL | MB_ICONQUESTION) == IDRETRY ? 0 : 1;
}
