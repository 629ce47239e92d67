// AFX_MODULE_STATE and CWinApp: the per-thread module state and the application object, the
// same on every platform.
#include "Modules.h"

#include <cstdlib>
#include <cstring>

namespace {

// Each thread starts in a state of its own that names no module, so that what one thread
// does to its default state is never seen by another.
thread_local AFX_MODULE_STATE threadDefaultState = {nullptr, nullptr, nullptr};
thread_local AFX_MODULE_STATE *currentState = nullptr;

} // namespace

AFX_MODULE_STATE *AfxGetModuleState() {
  return currentState != nullptr ? currentState : &threadDefaultState;
}

AFX_MODULE_STATE *AfxSetModuleState(AFX_MODULE_STATE *state) {
  AFX_MODULE_STATE *previous = AfxGetModuleState();
  currentState = state;
  return previous;
}

HINSTANCE AfxGetResourceHandle() {
  return AfxGetModuleState()->m_hCurrentResourceHandle;
}

void AfxSetResourceHandle(HINSTANCE module) {
  AfxGetModuleState()->m_hCurrentResourceHandle = module;
}

CWinApp *AfxGetApp() {
  return AfxGetModuleState()->m_pCurrentWinApp;
}

CWinApp::CWinApp(const char *appName) : m_pszAppName(appName), m_pszHelpFilePath(strdup("")) {}

CWinApp::~CWinApp() {
  std::free(const_cast<char *>(m_pszHelpFilePath));
}
