// CMailDialog: binding the View Email window's controls, its texts, and its layout as the
// user resizes it.
#include "settings/MailDialog.h"

#include "resources/resource.h"

#include <initializer_list>
#include <iterator>

CMailDialog::CMailDialog(CWnd *parent) : CDialog(IDD_VIEW_EMAIL, parent) {}

CMailDialog::~CMailDialog() = default;

const MessageMap *CMailDialog::GetMessageMap() const {
  static const MessageMapEntry entries[] = {
      sizeEntry<&CMailDialog::OnSize>(),
      commandEntry<&CMailDialog::OnDone>(IDC_DONE),
      minMaxInfoEntry<&CMailDialog::OnGetMinMaxInfo>(),
  };
  static const MessageMap map = {CDialog::GetMessageMap(), entries, std::size(entries)};
  return &map;
}

void CMailDialog::DoDataExchange(CDataExchange *dx) {
  DDX_Control(dx, IDC_DONE, doneButton);
  DDX_Control(dx, IDC_VIEW_SUBJECT, subjectEdit);
  DDX_Control(dx, IDC_VIEW_LOCATION, locationEdit);
  DDX_Control(dx, IDC_VIEW_FROM, fromEdit);
  DDX_Control(dx, IDC_VIEW_DATE, dateEdit);
  DDX_Control(dx, IDC_VIEW_CC, ccEdit);
  DDX_Control(dx, IDC_VIEW_BODY, bodyEdit);
  DDX_Control(dx, IDC_VIEW_TO, toEdit);
}

BOOL CMailDialog::OnInitDialog() {
  CDialog::OnInitDialog();
  CenterWindow(nullptr);
  // The platform sent the first size message while it made the window, before this: that
  // size, recorded by OnSize, is the smallest the window may take.
  minTrackWidth = lastWidth;
  minTrackHeight = lastHeight;
  layoutReady = 1;
  toEdit.SetWindowTextA(to);
  fromEdit.SetWindowTextA(from);
  subjectEdit.SetWindowTextA(subject);
  ccEdit.SetWindowTextA(cc);
  locationEdit.SetWindowTextA(location);
  dateEdit.SetWindowTextA(date);
  bodyEdit.SetWindowTextA(body);
  return 0;
}

void CMailDialog::OnCancel() {
  CDialog::OnCancel();
}

void CMailDialog::OnDone() {
  OnCancel();
}

void CMailDialog::OnGetMinMaxInfo(MINMAXINFO *limits) {
  if (layoutReady == 1) {
    limits->ptMinTrackSize.x = minTrackWidth;
    limits->ptMinTrackSize.y = minTrackHeight;
  }
  Default();
}

void CMailDialog::OnSize(UINT type, int, int) {
  Default();
  if (type == SIZE_MINIMIZED)
    return; // the size in front of the minimising stays the last one
  RECT window;
  GetWindowRect(&window);
  const int width = window.right - window.left;
  const int height = window.bottom - window.top;
  if (layoutReady == 1) {
    // No layout constants: everything moves by the change since the last size.
    const int dw = width - lastWidth;
    const int dh = height - lastHeight;
    InvalidateRect(nullptr, TRUE);
    for (CEdit *header : {&toEdit, &fromEdit, &ccEdit, &dateEdit, &locationEdit, &subjectEdit})
      shiftEdges(*header, 0, dw, 0);
    shiftEdges(bodyEdit, 0, dw, dh);
    shiftEdges(doneButton, dw, dw, 0);
  }
  lastWidth = width;
  lastHeight = height;
}

void CMailDialog::shiftEdges(CWnd &control, int dLeft, int dRight, int dBottom) {
  RECT rect;
  control.GetWindowRect(&rect);
  ScreenToClient(&rect);
  rect.left += dLeft;
  rect.right += dRight;
  rect.bottom += dBottom;
  control.MoveWindow(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, TRUE);
}
