// CPropPage: the base of the settings pages that an agent builds inside a window of the host.
//
// The host creates a place for the page, the agent makes the page there (propPageInit), and
// the host later has it checked, stored (Validate) and closed. The agent reads and writes the
// three fields directly. Enter and Esc do nothing in a page, so that only the host ends it.
#pragma once

#include "platform/Dialogs.h"
#include "platform/Shell.h"

#include <cstdint>

class CPropPage : public CDialog {
public:
  // The plain page of template 129.
  explicit CPropPage(CWnd *parent);
  CPropPage(UINT templateId, CWnd *parent);
  ~CPropPage() override;

  // Reacts to no message of its own: an empty map behind CDialog's.
  const MessageMap *GetMessageMap() const override;
  void DoDataExchange(CDataExchange *dx) override;
  BOOL OnInitDialog() override;
  void OnOK() override;
  void OnCancel() override;
  // Commit 0 asks for the check step, 1 for the store step; 1 when the host may go on, 0 when
  // the user must stay on the page. The plain page has nothing to check: 1.
  virtual int32_t Validate(int32_t commit);
  // Puts the keyboard focus where the user starts; nothing on the plain page.
  virtual void setInitialFocus();

  // The folder pickers of the program and of the mail directory, titled with string
  // `titleId`, opening at the root of the shell's namespace. 1 when the user chose a folder,
  // whose path is then in `path` (empty when its name could not be had); 0 when the user
  // cancelled, with `path` untouched.
  int browseForExe(UINT titleId, CString &path);
  int browseForMail(UINT titleId, CString &path);
  // The name `flags` asks for of `list` in `folder`, into `path`: 1, or 0 when the folder
  // can't give it in a form this knows (`path` untouched).
  int getPathFromIdList(IShellFolder *folder, LPCITEMIDLIST list, DWORD flags, CString &path);

  CString mailPath; // what the agent loaded; after a Validate, what the user typed
  CString exePath;
  int32_t attach = 0; // "Index Attachments"; exchanged with a control on Eudora's page only
  UINT templateId;

private:
  int browseForFolder(UINT titleId, CString &path);
};
