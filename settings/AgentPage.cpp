// CMHAgent's side of the settings page: making it in the host's window, the check and store
// steps, the focus, and closing it.
#include "agent/Agent.h"

#include "include/tuk/AgentLog.h"
#include "settings/PropPage.h"

AGENT_LOG_SOURCE(".\\Agent");

namespace {

std::unique_ptr<CPropPage> newPlainPage(CWnd *parent) {
  return std::make_unique<CPropPage>(parent);
}

} // namespace

int32_t CMHAgent::openPage(AgentHandle parentWindow, AgentHandle *pageWindow, PageMaker makePage,
                           bool loadSettings) {
  // The agent has one place for a page: one that the host left open goes now.
  propPageClose();
  CWnd *parent = CWnd::FromHandle(reinterpret_cast<HWND>(parentWindow));
  propPage = makePage(parent);
  if (loadSettings)
    readSettings(propPage->mailPath, propPage->exePath, propPage->attach);
  // Not shown: placing, showing and hiding the page are the host's business.
  propPage->Create(propPage->templateId, parent);
  *pageWindow = reinterpret_cast<AgentHandle>(propPage->m_hWnd);
  return 0;
}

int32_t CMHAgent::propPageInit(AgentHandle parentWindow, uint32_t, AgentHandle *pageWindow) {
  return openPage(parentWindow, pageWindow, &newPlainPage, false);
}

int32_t CMHAgent::Validate(int32_t commit) {
  return propPage ? propPage->Validate(commit) : 1;
}

int32_t CMHAgent::validateAndStore(int32_t commit) {
  if (!propPage)
    return 1;
  const int32_t result = propPage->Validate(commit);
  AGENT_LOG("Validate: Mail: %s\tExe: %s\tAttach: %d", propPage->mailPath.GetString(),
            propPage->exePath.GetString(), static_cast<int>(propPage->attach));
  // Only a store step stores, and only with commit exactly 1.
  if (result == 1 && commit == 1)
    writeSettings(*propPage);
  return result;
}

void CMHAgent::propPageFocus() {
  if (propPage)
    propPage->setInitialFocus();
}

int32_t CMHAgent::propPageClose() {
  if (propPage) {
    propPage->DestroyWindow();
    propPage.reset();
  }
  return 0;
}
