// The per-thread module state: which state is current, how a scope restores it, and the
// application object that a state names.
#include "platform/Modules.h"
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

namespace {
CModule firstModule = {nullptr, &firstModule, nullptr};
CModule secondModule = {nullptr, &secondModule, nullptr};

// Runs `body` on a thread of its own and waits for it.
template <typename Body> void onNewThread(Body body) {
  std::thread(body).join();
}

TEST(ModuleState, ScopesRestoreTheEarlierStateAndEachThreadHasItsOwn) {
  AFX_MODULE_STATE outer = {&firstModule, &firstModule, nullptr};
  AFX_MODULE_STATE inner = {&secondModule, &secondModule, nullptr};
  AFX_MODULE_STATE *before = AfxGetModuleState();
  {
    AFX_MAINTAIN_STATE outerScope(&outer);
    EXPECT_EQ(AfxGetModuleState(), &outer);
    for (int pass = 0; pass < 2; ++pass) {
      AFX_MAINTAIN_STATE innerScope(&inner);
      EXPECT_EQ(AfxGetResourceHandle(), &secondModule);
      if (pass == 0)
        continue; // leaving the scope early restores as well
    }
    EXPECT_EQ(AfxGetModuleState(), &outer);
  }
  EXPECT_EQ(AfxGetModuleState(), before);
  // Each thread starts in a default state of its own that names nothing.
  AFX_MODULE_STATE mine = {&firstModule, &firstModule, nullptr};
  AFX_MAINTAIN_STATE scope(&mine);
  onNewThread([] {
    EXPECT_EQ(AfxGetModuleState()->m_hCurrentInstanceHandle, nullptr);
    EXPECT_EQ(AfxGetResourceHandle(), nullptr);
    EXPECT_EQ(AfxGetApp(), nullptr);
    // What this thread does to its default state stays with it.
    AfxSetResourceHandle(&secondModule);
    EXPECT_EQ(AfxGetResourceHandle(), &secondModule);
  });
  EXPECT_EQ(AfxGetModuleState(), &mine);
  EXPECT_EQ(AfxGetResourceHandle(), &firstModule);
  onNewThread([] { EXPECT_EQ(AfxGetResourceHandle(), nullptr); });
}

// An application that replaces the help file path, as the agent's does.
class HelpfulApp : public CWinApp {
public:
  HelpfulApp() : CWinApp("helpful") {
    std::free(const_cast<char *>(m_pszHelpFilePath));
    m_pszHelpFilePath = strdup("/opt/help/mail.hlp");
  }
};

// The leak checker of a sanitised build tells whether each path, replaced or not, is freed
// once by its own application.
TEST(WinApp, HelpFilePathsArePrivateHeapStringsTheDestructorFrees) {
  CWinApp plain, named("named");
  HelpfulApp helpful;
  EXPECT_STREQ(plain.m_pszHelpFilePath, "");
  EXPECT_STREQ(helpful.m_pszHelpFilePath, "/opt/help/mail.hlp");
}
} // namespace
