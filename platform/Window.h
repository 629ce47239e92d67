// The Win32 window calls the agent makes, over the headless window system, and their POINT,
// RECT, MINMAXINFO and HELPINFO.
//
// A window has a handle, a class, a text, a rectangle, style bits (visibility, enabled state
// and minimised state among them), a parent and children. Messages go to the window's class
// object (CWnd, Dialogs.h) when it has one and to the default handling otherwise. All calls
// take any handle: one that names no window makes them fail and do nothing.
#pragma once

#include "WinTypes.h"

#include <cstdint>

#ifdef _WIN32
#else

struct HWND__;
typedef HWND__ *HWND;

typedef uintptr_t WPARAM;
typedef intptr_t LPARAM;
typedef intptr_t LRESULT;
typedef intptr_t INT_PTR;
typedef uintptr_t ULONG_PTR;
typedef uintptr_t DWORD_PTR;

struct POINT {
  LONG x;
  LONG y;
};

struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

// WM_GETMINMAXINFO's record: the window's limits, which a handler may change.
struct MINMAXINFO {
  POINT ptReserved;
  POINT ptMaxSize;
  POINT ptMaxPosition;
  POINT ptMinTrackSize;
  POINT ptMaxTrackSize;
};

// WM_HELP's record: the window that help was asked about.
struct HELPINFO {
  UINT cbSize;
  int iContextType; // HELPINFO_WINDOW
  int iCtrlId;
  HANDLE hItemHandle;
  DWORD_PTR dwContextId;
  POINT MousePos;
};

enum : UINT {
  WM_SIZE = 0x0005,
  WM_CLOSE = 0x0010,
  WM_GETMINMAXINFO = 0x0024,
  WM_HELP = 0x0053,
  WM_INITDIALOG = 0x0110,
  WM_COMMAND = 0x0111,
};

enum : int { HELPINFO_WINDOW = 1 };
enum : WPARAM { SIZE_RESTORED = 0, SIZE_MINIMIZED = 1 };
enum : UINT { BN_CLICKED = 0 };

// Window styles.
enum : DWORD {
  WS_POPUP = 0x80000000u,
  WS_CHILD = 0x40000000u,
  WS_MINIMIZE = 0x20000000u,
  WS_VISIBLE = 0x10000000u,
  WS_DISABLED = 0x08000000u,
  WS_CAPTION = 0x00C00000u,
  WS_BORDER = 0x00800000u,
  WS_DLGFRAME = 0x00400000u,
  WS_SYSMENU = 0x00080000u,
  WS_THICKFRAME = 0x00040000u,
  WS_TABSTOP = 0x00010000u,
  WS_MINIMIZEBOX = 0x00020000u,
  ES_READONLY = 0x0800u,
  BS_TYPEMASK = 0x000Fu,
  BS_CHECKBOX = 0x0002u,
  BS_AUTOCHECKBOX = 0x0003u,
  BS_3STATE = 0x0005u,
  BS_AUTO3STATE = 0x0006u,
};

// ShowWindow commands.
enum : int { SW_HIDE = 0, SW_SHOW = 5 };

// Message boxes: the buttons in the low four bits, then the icon.
enum : UINT {
  MB_OK = 0x0,
  MB_OKCANCEL = 0x1,
  MB_ABORTRETRYIGNORE = 0x2,
  MB_YESNOCANCEL = 0x3,
  MB_YESNO = 0x4,
  MB_RETRYCANCEL = 0x5,
  MB_TYPEMASK = 0xF,
  MB_ICONHAND = 0x10,
  MB_ICONQUESTION = 0x20,
  MB_ICONEXCLAMATION = 0x30,
  MB_ICONASTERISK = 0x40,
};

// Dialog results and the buttons of message boxes.
enum : int { IDOK = 1, IDCANCEL = 2, IDABORT = 3, IDRETRY = 4, IDIGNORE = 5, IDYES = 6, IDNO = 7 };

inline UINT LOWORD(WPARAM value) {
  return static_cast<UINT>(value & 0xFFFF);
}
inline UINT HIWORD(WPARAM value) {
  return static_cast<UINT>((value >> 16) & 0xFFFF);
}
inline WPARAM MAKEWPARAM(UINT low, UINT high) {
  return static_cast<WPARAM>((low & 0xFFFF) | ((high & 0xFFFF) << 16));
}

BOOL IsWindow(HWND window);
// TRUE when the window and all its parents are shown.
BOOL IsWindowVisible(HWND window);
// SW_SHOW or SW_HIDE; TRUE when the window was visible before.
BOOL ShowWindow(HWND window, int command);
// Destroys the window and all its children; their class objects lose their handles.
BOOL DestroyWindow(HWND window);

HWND GetParent(HWND window);
HWND GetDlgItem(HWND dialog, int id);
int GetDlgCtrlID(HWND window);

// Check boxes: 0 clear, 1 checked (any other non-zero value sets 1). FALSE, or 0, for a
// control that is not a check box.
BOOL CheckDlgButton(HWND dialog, int id, UINT check);
UINT IsDlgButtonChecked(HWND dialog, int id);

BOOL SetWindowTextA(HWND window, const char *text);
// Copies at most `bufferMax` - 1 bytes and a zero; the count copied.
int GetWindowTextA(HWND window, char *buffer, int bufferMax);
int GetWindowTextLengthA(HWND window);

// The outer rectangle in screen coordinates.
BOOL GetWindowRect(HWND window, RECT *rect);
// The client area, with its top left corner at (0, 0).
BOOL GetClientRect(HWND window, RECT *rect);
BOOL ScreenToClient(HWND window, POINT *point);
BOOL ClientToScreen(HWND window, POINT *point);
// Places the window in its parent's client area (the screen for a top-level window). A window
// whose size changes gets WM_SIZE. Negative sizes count as 0.
BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);
// Marks the area for repainting; a headless window only checks its handle.
BOOL InvalidateRect(HWND window, const RECT *rect, BOOL erase);

// The window that takes the keyboard input; SetFocus returns the one that had it.
HWND SetFocus(HWND window);
HWND GetFocus();

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// The default handling: WM_CLOSE ends a dialog with IDCANCEL and destroys other windows;
// WM_HELP goes on to the parent; every other message is ignored.
LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Asks the process-wide user (WindowApi.h). `owner` may be null. A null caption is "Error".
int MessageBoxA(HWND owner, const char *text, const char *caption, UINT type);

#endif // _WIN32
