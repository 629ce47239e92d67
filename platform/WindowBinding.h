// WindowBinding, private to the platform library on Windows: how the system's windows reach
// their class objects.
//
// A window bound to an object keeps its binding in a window property, freed with the window
// (WM_NCDESTROY). A dialog that a CDialog made gets its messages through dialogProcedure; a
// control that an object subclassed, through windowProcedure, which hands what the object
// does not take to the procedure it replaced. Windows that no object owns are never
// subclassed: the objects FromHandle makes for them are kept apart (WndWin32.cpp).
#pragma once

#include "Dialogs.h"

struct WindowBinding {
  CWnd *object = nullptr;              // gets the window's messages; null once it let go
  WNDPROC replaced = nullptr;          // the procedure windowProcedure took over, if any
  bool throughDialogProcedure = false; // a dialog of a CDialog
  bool sized = false;                  // the dialog's object has had a WM_SIZE

  // The binding of `window`, or null.
  static WindowBinding *of(HWND window);
  // A new binding of `window`, owned by the window; null when the window takes no property.
  static WindowBinding *make(HWND window);
  // Frees the binding of a window that is going, and tells its object.
  static void release(HWND window);
  // Takes over the procedure of `window` for a new binding; null on failure.
  static WindowBinding *subclass(HWND window);
  // Gives a subclassed window its procedure back when nobody took it over after us, and
  // frees its binding; else the binding stays, handing every message on.
  static void unsubclass(HWND window);

  static LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  static INT_PTR CALLBACK dialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

private:
  // Runs the message through the object of a dialog; the result as the dialog manager wants
  // it.
  static INT_PTR dispatchToDialog(HWND dialog, CWnd &object, UINT message, WPARAM wParam,
                                  LPARAM lParam);
};

// The CDialog whose dialog is being made on this thread, for the dialog procedure to claim
// with the first message it gets; restores the one before, so that a dialog made while
// another is being made claims its own.
class PendingDialog {
public:
  explicit PendingDialog(CDialog &dialog);
  PendingDialog(const PendingDialog &) = delete;
  PendingDialog &operator=(const PendingDialog &) = delete;
  ~PendingDialog();
  // The dialog waiting for its window, which is then no longer pending; null if none.
  static CDialog *claim();

private:
  CDialog *previous_;
};
