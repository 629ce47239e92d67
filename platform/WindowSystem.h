// WindowState and WindowCreation, private to the platform library: the windows behind HWND
// values, their geometry, and the person's actions on them that the C API (WindowApi.h) offers.
#pragma once

#include "Window.h"

#include <memory>
#include <string>
#include <vector>

class CWnd;

enum class WindowKind { Frame, Dialog, Edit, Button, CheckBox, Static };

struct WindowState {
  WindowState();
  ~WindowState();
  WindowState(const WindowState &) = delete;
  WindowState &operator=(const WindowState &) = delete;

  HWND handle = nullptr;
  WindowKind kind = WindowKind::Static;
  int id = 0;
  std::string text;
  RECT rect{};         // outer rectangle in the parent's client area (screen if top-level)
  RECT restoredRect{}; // while minimised: the rectangle a restore gives back
  DWORD style = 0;     // WS_VISIBLE, WS_DISABLED and WS_MINIMIZE hold those states
  DWORD exStyle = 0;
  int check = 0;
  HWND parent = nullptr;
  std::vector<HWND> children;      // in creation order
  CWnd *object = nullptr;          // the class object that gets its messages, if any
  std::unique_ptr<CWnd> ownObject; // the object FromHandle made, when it had none
  bool hostFrame = false;
};

struct WindowCreation {
  WindowKind kind;
  int id;
  const char *text;
  RECT rect; // in the parent's client area
  DWORD style;
  DWORD exStyle;
  HWND parent; // null: a top-level window
};

// A new window, or null when the parent names no window. Sends nothing.
HWND createWindow(const WindowCreation &creation);
// The window of a handle, or null when it names none.
WindowState *findWindow(HWND window);
std::vector<HWND> topLevelWindows();

// The screen the windows live on, and the fixed base units of dialog templates.
constexpr int kScreenWidth = 1280;
constexpr int kScreenHeight = 1024;
int dialogUnitsToPixelsX(int units);
int dialogUnitsToPixelsY(int units);

// The frame and caption around the client area that the style asks for.
RECT nonClientInsets(DWORD style);
// The outer rectangle in screen coordinates, and the client area's.
RECT screenRect(const WindowState &window);
RECT screenClientRect(const WindowState &window);
// WM_SIZE's size argument: the client area's width and height.
LPARAM clientSizeParam(const WindowState &window);
// Sets the outer rectangle (parent's client coordinates) and sends WM_SIZE when the size
// changed. Negative sizes count as 0.
void placeWindow(HWND window, RECT rect);

// True when a person could act on the window: it and every parent shown, enabled and not
// minimised.
bool isReachable(const WindowState &window);
// The nearest dialog that holds the window, the window itself included; null if none.
HWND enclosingDialog(HWND window);

// The name the C API gives a kind.
const char *windowClassName(WindowKind kind);

// The person's actions (WindowApi.h), each -1 when it can't be done, else 0.
int clickWindow(HWND window);
int pressKey(HWND window, int key);
int resizeWindow(HWND window, int width, int height);
int minimizeWindow(HWND window);
int restoreWindow(HWND window);
