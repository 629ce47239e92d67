/* The window system's face to a host: what a person sees of the agent's windows and does
 * with them. C-compatible; exported by libtuk_platform.so, which the host and the agent share,
 * so that both see the same windows.
 *
 * Contract of every call:
 * - Windows are named by TukWindow handles, the same numbers the agent's entries take and
 *   give as window handles (propPageInit). 0 names no window. A handle is never reused within
 *   a process; a handle of a window that is gone, or a number that never named one, makes a
 *   call fail (or give 0) and does nothing else. No call crashes on a bad handle or on a null
 *   pointer.
 * - Results: 0 for success and -1 for failure, unless a call says otherwise.
 * - Coordinates are pixels. Rectangles in TukWindowInfo are screen coordinates; tukWindowPlace
 *   takes coordinates in the parent's client area (the screen for a top-level window). Dialog
 *   templates are laid out in dialog units converted with fixed base units (6 by 13 pixels).
 * - Calls that stand for a person's action (click, keys, resize, minimise, restore, close,
 *   focus) act only on a window that a person could reach: it and all its parents shown,
 *   enabled and not minimised. Otherwise they fail and nothing happens.
 * - Everything runs on one thread, the host's, one call at a time. A user callback (below) may
 *   use every call of this header, also on the window it was given; it must not call the
 *   agent's entries, because it runs inside one of them or inside a window of the agent.
 */
#ifndef TUK_WINDOW_API_H
#define TUK_WINDOW_API_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uintptr_t TukWindow; /* as AgentHandle for windows; 0: none */

/* ---- The person at the screen ------------------------------------------------------------
 * One process-wide callback answers everything the agent asks of a person: message boxes,
 * the folder picker and the modal loop of a dialog; it is also shown the help topics that F1
 * brings up. With no callback installed a message box answers Cancel where it has one and OK
 * otherwise, the picker answers "cancelled", a modal dialog is not shown at all and its
 * DoModal gives Cancel, and help is shown to nobody. */

enum TukUserEventKind {
  TUK_USER_MESSAGE_BOX = 1,   /* answer: the id of the button pressed (TUK_ID_...) */
  TUK_USER_FOLDER_PICKER = 2, /* answer: 1 with a folder written to `folder`, 0 cancelled */
  TUK_USER_MODAL_DIALOG = 3,  /* answer ignored; see below */
  TUK_USER_HELP = 4           /* answer ignored */
};

typedef struct {
  int32_t kind; /* a TukUserEventKind */
  /* message box and picker: the owner window (0: none); modal dialog: the dialog;
   * help: the window the help is about (the control that had F1 pressed). */
  TukWindow window;
  /* message box: the message; picker: its title; modal dialog: its title; help: the topic's
   * text. Never null; valid during the call. */
  const char *text;
  /* message box: the caption; picker: the folder it opens at, "" for the root of the
   * shell's namespace; modal dialog: ""; help: the topic's title. Never null. */
  const char *caption;
  /* message box: the MB_ type bits (low four bits the buttons: 0 OK, 1 OK Cancel, 2 Abort
   * Retry Ignore, 3 Yes No Cancel, 4 Yes No, 5 Retry Cancel; 0x10..0x40 the icon);
   * picker: the BIF_ flags; help: the context id; modal dialog: 0. */
  uint32_t flags;
  /* picker only: where the callback writes the chosen folder, zero-terminated, at most
   * folderCapacity bytes with the zero. A folder that is not an existing directory counts as
   * cancelled. Null for the other kinds. */
  char *folder;
  uint32_t folderCapacity;
} TukUserEvent;

/* Button ids a message box answers with. An answer that names no button of the box is taken
 * as the box's answer without a person: Cancel where it has one, else OK. */
enum {
  TUK_ID_OK = 1,
  TUK_ID_CANCEL = 2,
  TUK_ID_ABORT = 3,
  TUK_ID_RETRY = 4,
  TUK_ID_IGNORE = 5,
  TUK_ID_YES = 6,
  TUK_ID_NO = 7
};

/* A modal dialog (the agent's View Email window) is created, shown, and handed to the
 * callback once. The callback may read it, type, click, resize, minimise and close it, all
 * with the calls below. When the callback returns with the dialog still open, the dialog is
 * closed as by its close box; DoModal then ends and destroys the window. */
typedef int32_t (*TukUserCallback)(void *context, const TukUserEvent *event);

/* Installs the person; null uninstalls. `context` is passed back on every call. */
void tukSetUser(TukUserCallback callback, void *context);

/* ---- The host's own windows -------------------------------------------------------------- */

/* A visible, sizable top-level frame with a title, whose client area is the given size: the
 * parent window for a settings page. 0 on failure. */
TukWindow tukFrameCreate(const char *title, int32_t clientWidth, int32_t clientHeight);
/* Destroys a frame from tukFrameCreate and every window in it (a page in it is then gone for
 * the agent too; its later calls on it do nothing). Fails for windows the host did not make. */
int32_t tukFrameDestroy(TukWindow frame);

/* ---- Finding and reading windows --------------------------------------------------------- */

/* The child of `parent` with the control id `id` (direct children only), or 0. */
TukWindow tukWindowFindChild(TukWindow parent, int32_t id);
/* The children of `parent` in creation order (tab order for a dialog), or with parent 0 the
 * top-level windows. Writes at most `capacity` handles and returns how many there are; -1 for
 * a bad parent. */
int32_t tukWindowChildren(TukWindow parent, TukWindow *children, int32_t capacity);

typedef struct {
  int32_t left, top, right, bottom;
} TukRect;

typedef struct {
  int32_t id;              /* control id; -1 for a static without one; 0 for frames and dialogs */
  const char *windowClass; /* "frame", "dialog", "edit", "button", "checkbox" or "static";
                              static text */
  uint32_t style;          /* WS_, ES_, BS_ and DS_ bits, WS_VISIBLE among them */
  TukRect rect;            /* the outer rectangle, screen pixels */
  TukRect client;          /* the client area, screen pixels */
  int32_t visible;         /* 1 when it and all its parents are shown */
  int32_t enabled;
  int32_t minimized;
  int32_t focused;  /* 1 when it has the keyboard focus */
  int32_t checked;  /* check boxes: 0 or 1; -1 for other windows */
  TukWindow parent; /* 0 for a top-level window */
} TukWindowInfo;

int32_t tukWindowGetInfo(TukWindow window, TukWindowInfo *info);

/* Copies at most capacity - 1 bytes of the window's text and a zero (nothing with capacity 0
 * or a null buffer) and returns the length of the whole text, so that a second call with
 * length + 1 bytes gets it all; -1 for a bad window. */
int32_t tukWindowGetText(TukWindow window, char *buffer, int32_t capacity);

/* ---- Acting on windows ------------------------------------------------------------------- */

/* Sets the window's text, as the program would (any window, also a hidden or read-only one). */
int32_t tukWindowSetText(TukWindow window, const char *text);
/* Sets a check box to 0 (clear) or 1 (checked), as the program would; no click is reported. */
int32_t tukWindowSetCheck(TukWindow checkBox, int32_t checked);
/* A person clicks a push button or a check box: it takes the focus, a check box toggles, and
 * the dialog is told. Fails for other windows. */
int32_t tukWindowClick(TukWindow button);
/* Shows (1) or hides (0) a window: how a host places its page in view. */
int32_t tukWindowShow(TukWindow window, int32_t show);
/* A person clicks into a window: it takes the keyboard focus. */
int32_t tukWindowFocus(TukWindow window);
/* The window with the keyboard focus, or 0. */
TukWindow tukWindowFocused(void);
/* Moves and sizes a window as its program would: (x, y) in the parent's client area, the
 * outer width and height. No size limits apply; negative sizes count as 0. */
int32_t tukWindowPlace(TukWindow window, int32_t x, int32_t y, int32_t width, int32_t height);
/* A person drags the sizing frame of a sizable window to an outer width and height, keeping
 * its top left corner. The window's minimum and maximum tracking sizes apply, as the window
 * itself reports them. Fails for a window without a sizing frame. */
int32_t tukWindowResize(TukWindow window, int32_t width, int32_t height);
/* A person minimises a window with a minimise box, or restores a minimised one. */
int32_t tukWindowMinimize(TukWindow window);
int32_t tukWindowRestore(TukWindow window);
/* A person uses the close box of a top-level window with a system menu: a dialog takes it as
 * Cancel, a frame is destroyed. */
int32_t tukWindowClose(TukWindow window);

enum TukKey {
  TUK_KEY_ENTER = 1,  /* the dialog that holds the window gets the OK command */
  TUK_KEY_ESCAPE = 2, /* the dialog that holds the window gets the Cancel command */
  TUK_KEY_F1 = 3      /* help about the window: its dialog's help, if the dialog has any */
};

/* A person presses a key while `window` has the focus (it takes the focus first). */
int32_t tukWindowPressKey(TukWindow window, int32_t key);

#ifdef __cplusplus
}
#endif

#endif /* TUK_WINDOW_API_H */
