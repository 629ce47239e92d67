// CClientPropPage: what the four client pages share. A page shows the client's mail and
// program directories, each with a Browse button, and on Eudora's page a check box for
// attachments; its check step warns of what is missing.
#pragma once

#include "settings/PropPage.h"

#include <cstdint>

// What tells one client's page from another's.
struct PageTraits {
  static constexpr int kProgramNames = 2;

  UINT templateId;
  bool attachBox;                     // the "Index Attachments" box, exchanged with `attach`
  UINT programNameIds[kProgramNames]; // the program file looked for, then another name or 0
  UINT noExeDirTextId;                // the check step's texts, by state: 1
  UINT noExeTextId;                   // 2
  UINT noMailDirTextId;               // 4
  UINT noBothDirsTextId;              // 5
  UINT noMailNoExeTextId;             // 6
  UINT captionId;                     // the check step's message box
  UINT mailPickerTitleId;
  UINT exePickerTitleId;
  const uint32_t *helpTable; // control id and help context id pairs, ended by two zeros
};

class CClientPropPage : public CPropPage {
public:
  CClientPropPage(const PageTraits &traits, CWnd *parent);
  ~CClientPropPage() override;

  // The Browse buttons and WM_HELP.
  const MessageMap *GetMessageMap() const override;
  // Binds the two edits, and on Eudora's page exchanges `attach` with the check box. The
  // directories are copied by hand.
  void DoDataExchange(CDataExchange *dx) override;
  // Shows the loaded fields. On Eudora's page `attach` then drops to 0: until a check step
  // reads it back, the box alone holds the state.
  BOOL OnInitDialog() override;
  // Takes the typed directories in both modes. Commit 0 then checks them and, when something
  // is missing, asks the user: Retry gives 0 (stay on the page), any other answer 1. Any
  // other commit gives 1 at once.
  int32_t Validate(int32_t commit) override;
  // The focus goes to the mail directory.
  void setInitialFocus() override;

  CEdit exeEdit;  // 1003, the program directory
  CEdit mailEdit; // 1000, the mail directory

protected:
  void onBrowseMail();
  void onBrowseExe();
  BOOL onHelpInfo(HELPINFO *info);

private:
  UINT warningTextId(int state) const;

  const PageTraits &traits_;
};
