// CModule, AFX_MODULE_STATE, AFX_MAINTAIN_STATE and CWinApp: modules, the per-thread module
// state and the application object.
//
// A module is a library with a string table and dialog templates of its own: the agent, or a
// language module loaded with LoadLibraryA. The module state that is current on a thread
// decides which module's resources a lookup sees; an entry of a library makes its own state
// current for the length of the call with AFX_MAINTAIN_STATE.
#pragma once

#include "Object.h"
#include "WinTypes.h"

#include <cstddef>

struct ResourceTable;

#ifdef _WIN32
// A module is the system's: its instance handle is the base of its image, and its resources
// are the ones the resource compiler put in it.
extern "C" IMAGE_DOS_HEADER __ImageBase;
// The module of the library this is compiled into; `resources` (the POSIX table) is not used.
#define TUK_LIBRARY_MODULE(name, resources) static_assert(true, "the image is the module")
#define TUK_LIBRARY_INSTANCE(name) reinterpret_cast<HINSTANCE>(&__ImageBase)
#else
// A loaded module. Modules that a library declares for itself are plain statics (constant
// initialisation, nothing runs at load); LoadLibraryA makes the others.
struct CModule {
  const ResourceTable *resources; // null when the module carries none
  const void *anchor;             // an address inside the module's own image: finds its file
  void *dlHandle;                 // from dlopen for a module that LoadLibraryA loaded
};
typedef CModule *HINSTANCE;
typedef CModule *HMODULE;
// Declares `name`, the module of the library this is compiled into, whose string table and
// dialog templates are `resources`.
// `name` is declared here, so it can't be parenthesised.
// NOLINTNEXTLINE(bugprone-macro-parentheses)
#define TUK_LIBRARY_MODULE(name, resources) CModule name = {&(resources), &name, nullptr}
#define TUK_LIBRARY_INSTANCE(name) (&(name))
#endif

class CWinApp;

struct AFX_MODULE_STATE {
  HINSTANCE m_hCurrentInstanceHandle; // the module this state belongs to
  HINSTANCE m_hCurrentResourceHandle; // where strings and dialog templates are looked up
  CWinApp *m_pCurrentWinApp;
};

// The state current on this thread: the one last made current, else the platform's own
// default state (no module, no resources, no application).
AFX_MODULE_STATE *AfxGetModuleState();
// Makes `state` current on this thread and returns the state that was current before.
AFX_MODULE_STATE *AfxSetModuleState(AFX_MODULE_STATE *state);

// Makes a state current for a scope and restores the earlier one on every way out.
class AFX_MAINTAIN_STATE {
public:
  explicit AFX_MAINTAIN_STATE(AFX_MODULE_STATE *state) : previous_(AfxSetModuleState(state)) {}
  AFX_MAINTAIN_STATE(const AFX_MAINTAIN_STATE &) = delete;
  AFX_MAINTAIN_STATE &operator=(const AFX_MAINTAIN_STATE &) = delete;
  ~AFX_MAINTAIN_STATE() { AfxSetModuleState(previous_); }

private:
  AFX_MODULE_STATE *previous_;
};

HINSTANCE AfxGetResourceHandle();
void AfxSetResourceHandle(HINSTANCE module);
CWinApp *AfxGetApp();

#ifndef _WIN32
// Loads the library `name` from the directory of the current module (the file that holds
// the current state's instance anchor), adding ".so" when the last component of `name` has
// no dot. A name with a '/' is taken as a path. The library's resources are those it
// exports under the symbol tukResourceTable, if any. Null on failure, with GetLastError set.
HMODULE LoadLibraryA(const char *name);
// Unloads a module from LoadLibraryA. A module that a library declared for itself is left.
BOOL FreeLibrary(HMODULE module);
#endif

// The absolute directory of the file that holds `anchor` (without a trailing separator), or
// "." when it can't be had.
const char *moduleDirectory(const void *anchor, char *buffer, size_t size);

// The application object of a library. The base sets the help file path to a private heap
// copy of an empty string; a derived application may free it and set its own, which the
// destructor frees.
class CWinApp : public CObject {
public:
  explicit CWinApp(const char *appName = nullptr);
  CWinApp(const CWinApp &) = delete;
  CWinApp &operator=(const CWinApp &) = delete;
  ~CWinApp() override;

  const char *m_pszAppName;
  const char *m_pszHelpFilePath; // malloc'd
};
