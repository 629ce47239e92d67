// The class library's windows: CWnd, CDialog made from a dialog template, the CEdit and
// CButton controls, and data exchange between a dialog's members and its controls.
//
// A class object is attached to at most one window and a window to at most one object. The
// window's messages go to the object's WindowProc with the module state that was current when
// the object was made, so that a handler sees its own library's resources. When a window is
// destroyed its object loses the handle (m_hWnd becomes null) and every call on it then does
// nothing; when an object that made its window goes, it destroys the window.
#pragma once

#include "CString.h"
#include "MessageMap.h"
#include "Modules.h"
#include "Object.h"
#include "Window.h"

struct DialogTemplate;
class CDataExchange;

class CWnd : public CObject {
public:
  CWnd();
  ~CWnd() override;
  CWnd(const CWnd &) = delete;
  CWnd &operator=(const CWnd &) = delete;

  // The object of a window: the one attached to it, else one the window itself owns (valid
  // until the window is destroyed). Null for a handle that names no window.
  static CWnd *FromHandle(HWND window);

  virtual const MessageMap *GetMessageMap() const;
  // Hands the message to the first matching entry of the map chain, else to DefWindowProcA.
  virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
  // Binds members to controls and moves their values; nothing in CWnd.
  virtual void DoDataExchange(CDataExchange *dx);

  // Runs DoDataExchange: into the members with TRUE, into the controls with FALSE. TRUE.
  BOOL UpdateData(BOOL saveAndValidate = TRUE);
  // The default handling of the message being handled now.
  LRESULT Default();

  BOOL DestroyWindow();
  BOOL ShowWindow(int command);
  CWnd *GetDlgItem(int id) const;
  void SetWindowTextA(const char *text);
  // The window's text; without a window `text` is left as it was.
  void GetWindowTextA(CString &text) const;
  void GetWindowRect(RECT *rect) const;
  void GetClientRect(RECT *rect) const;
  void ScreenToClient(POINT *point) const;
  // Both corners.
  void ScreenToClient(RECT *rect) const;
  void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE);
  void InvalidateRect(const RECT *rect, BOOL erase = TRUE);
  // Centres the window over its parent's client area, or for a top-level window over the
  // screen. `alternateOwner` is not looked at.
  void CenterWindow(CWnd *alternateOwner = nullptr);
  // Takes the keyboard focus; the object of the window that had it, or null.
  CWnd *SetFocus();
  // A message box owned by this window.
  int MessageBoxA(const char *text, const char *caption = nullptr, UINT type = MB_OK);

  // Attaches this object to the control `id` of `parent`, unless it is attached already.
  BOOL SubclassDlgItem(UINT id, CWnd *parent);

  HWND m_hWnd = nullptr;

  // For the window system: runs WindowProc with this object's module state current.
  LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam);
  // For the window system: the window is gone or taken by another object.
  void windowDetached() { m_hWnd = nullptr; }

protected:
  // Attaches this object to a window it made, which it destroys when it goes.
  void attachCreated(HWND window);

private:
  struct Message {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
  };

  // What the window does with a message that no entry of the map takes.
  LRESULT defaultHandling(UINT message, WPARAM wParam, LPARAM lParam);
  // Lets go of the window, so that its messages no longer reach this object.
  void unbind();

  AFX_MODULE_STATE *moduleState_;
  Message current_{};
  bool ownsWindow_ = false;
#ifdef _WIN32
  // The system's windows reach their objects through WindowBinding (WindowBinding.h). A dialog
  // procedure asks the dialog manager for the default handling by its result, after the
  // handler: defaultWanted_ says a handler asked for it.
  friend struct WindowBinding;
  bool defaultWanted_ = false;
#endif
};

class CDialog : public CWnd {
public:
  CDialog();
  explicit CDialog(UINT templateId, CWnd *parent = nullptr);
  ~CDialog() override;

  // IDOK to OnOK, IDCANCEL to OnCancel, WM_INITDIALOG to OnInitDialog.
  const MessageMap *GetMessageMap() const override;
  // UpdateData(FALSE); TRUE. A non-zero result gives the focus to the first control with a
  // tab stop.
  virtual BOOL OnInitDialog();
  // UpdateData(TRUE), then EndDialog(IDOK).
  virtual void OnOK();
  // EndDialog(IDCANCEL).
  virtual void OnCancel();

  // Makes the window of a modeless dialog from template `templateId` of the current resource
  // module (else of the state's own module), as a child of `parent` for a child template: the
  // window gets WM_SIZE, then its controls are made (on Windows, before the WM_SIZE), then
  // WM_INITDIALOG; a template with WS_VISIBLE is then shown. FALSE when there is no such
  // template, a child template has no parent, or the object has a window already.
  BOOL Create(UINT templateId, CWnd *parent = nullptr);
  // Makes the dialog of the constructor's template and hands it to the process-wide user
  // (WindowApi.h) until it ends; destroys it and returns the EndDialog result. IDCANCEL
  // without showing anything when no user is installed; -1 when the window can't be made.
  // On Windows the dialog manager's modal loop runs it, with the parent disabled meanwhile.
  INT_PTR DoModal();
  // A modal dialog ends with `result` when its user is done; a modeless one is hidden.
  void EndDialog(int result);

protected:
  UINT m_nIDTemplate = 0;
  CWnd *m_pParentWnd = nullptr;

private:
  bool modal_ = false;
#ifndef _WIN32
  BOOL createFromTemplate(const DialogTemplate &dialog, HWND parent);

  bool modalEnded_ = false;
  int modalResult_ = -1;
#endif
};

class CEdit : public CWnd {};

class CButton : public CWnd {
public:
  // 0 clear, 1 checked; 0 for a window that is not a check box.
  int GetCheck() const;
  void SetCheck(int check);
};

class CDataExchange {
public:
  CDataExchange(CWnd *dialog, BOOL saveAndValidate)
      : m_pDlgWnd(dialog), m_bSaveAndValidate(saveAndValidate) {}

  CWnd *m_pDlgWnd;
  BOOL m_bSaveAndValidate; // TRUE: controls to members
};

// Attaches `control` to the dialog's control `id` the first time.
void DDX_Control(CDataExchange *dx, int id, CWnd &control);
// Check box `id` and `value`: 0 clear, anything else checked; read back as 0 or 1.
void DDX_Check(CDataExchange *dx, int id, int &value);
