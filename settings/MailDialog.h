// CMailDialog: the modal View Email window that shows one message, read-only: the five
// header fields and the mailbox's path in single-line boxes, the body in a large one.
//
// The window can grow and shrink back, but never below its first size: the header boxes
// stretch with its right edge, the body box with its right and bottom edges, and the Done
// button keeps its distance from the right edge.
#pragma once

#include "platform/Dialogs.h"

#include <cstdint>

class CMailDialog : public CDialog {
public:
  // Template 133.
  explicit CMailDialog(CWnd *parent = nullptr);
  ~CMailDialog() override;

  const MessageMap *GetMessageMap() const override;
  void DoDataExchange(CDataExchange *dx) override;
  // Centres the window, takes its size as the smallest it may have, shows the texts. 0.
  BOOL OnInitDialog() override;
  void OnCancel() override;

  CButton doneButton;
  CEdit subjectEdit;
  CEdit locationEdit;
  CEdit fromEdit;
  CEdit dateEdit;
  CEdit ccEdit;
  CEdit bodyEdit;
  CEdit toEdit;
  // The texts for the boxes, set before DoModal.
  CString subject;
  CString location;
  CString from;
  CString date;
  CString cc;
  CString body;
  CString to;
  int32_t layoutReady = 0; // 1 once OnInitDialog has run
  int32_t minTrackWidth = 0;
  int32_t minTrackHeight = 0;
  int32_t lastWidth = 0; // outer size at the last size message
  int32_t lastHeight = 0;

protected:
  // Moves the controls by the change of the outer size since the last size message; a
  // minimised window keeps its layout and its last size.
  void OnSize(UINT type, int clientWidth, int clientHeight);
  void OnDone();
  void OnGetMinMaxInfo(MINMAXINFO *limits);

private:
  // Moves the control's left and right edges and its bottom edge by the given amounts.
  void shiftEdges(CWnd &control, int dLeft, int dRight, int dBottom);
};
