// What the settings suites share: a registry file of the test's own, one client's agent
// brought up in this process with its log captured, the person at the screen, and a host
// frame to put pages in; and the numbers that tell the four clients apart.
#pragma once

#include "cmn/Registry.h"
#include "platform/WinTypes.h"
#include "resources/resource.h"
#include "tests/platform/ScriptedUser.h"
#include "tests/support/AgentSession.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>
#include <memory>
#include <ostream>

struct Client {
  const char *name;
  std::string key;      // the agent key
  const char *program;  // the program file whose presence the page checks
  int width, height;    // the page template's size in dialog units
  UINT stateTextIds[7]; // by check state; 0 where a state can't occur
  UINT captionId;
  UINT mailPickerTitleId, exePickerTitleId;
  uint32_t exeHelpId, mailHelpId;
};

inline void PrintTo(const Client &client, std::ostream *out) {
  *out << client.name;
}

// clang-format off
inline std::vector<Client> allClients() {
  const std::string base = "Software\\Tuk\\Agents\\";
  return {
      {"Eudora", base + "MHEudora", "eudora.exe", 276, 151, {0, 31, 34, 0, 30, 69, 70}, 35, 32, 33,
       1528, 1529},
      {"Internet", base + "MHInternet", "explorer.exe", 300, 151, {0, 45, 48, 0, 44, 67, 68}, 49,
       46, 47, 203, 204},
      {"Netscape", base + "MHNetscape", "netscape.exe", 302, 159, {0, 51, 54, 0, 50, 63, 64}, 55,
       52, 53, 205, 206},
      {"Pegasus", base + "MHPegasus", "winpm-32.exe", 304, 162, {0, 57, 60, 0, 56, 65, 66}, 61, 58,
       59, 207, 208},
  };
}
// clang-format on

// The pages' controls, by the ids the resource script gives them.
enum : int {
  kMailEdit = IDC_MAIL_EDIT,
  kBrowseMail = IDC_BROWSE_MAIL,
  kExeEdit = IDC_EXE_EDIT,
  kBrowseExe = IDC_BROWSE_EXE,
  kAttachBox = IDC_ATTACH_CHECK,
};

class SettingsTest : public ::testing::Test {
protected:
  void TearDown() override {
    session.reset();
    tukFrameDestroy(frame);
  }
  // Brings the agent of `key` up, with its log on and captured.
  void start(const std::string &key) {
    CapturedLog::lines().clear();
    session = std::make_unique<AgentSession>(key, "EN", &CapturedLog::sink);
    entries().setLogFlag(1);
  }
  const AgentEntryTable &entries() const { return session->entries(); }
  // The page of the agent in the frame, shown by the host unless asked not to.
  TukWindow openPage(bool show = true) {
    AgentHandle page = 0;
    EXPECT_EQ(0, entries().propPageInit(frame, 0, &page));
    if (show)
      tukWindowShow(page, 1);
    return page;
  }
  static TukWindow control(TukWindow page, int id) { return tukWindowFindChild(page, id); }
  static std::string field(TukWindow page, int id) { return windowText(control(page, id)); }
  static void type(TukWindow page, int id, const std::string &text) {
    ASSERT_EQ(0, tukWindowSetText(control(page, id), text.c_str()));
  }
  // A string registry value, or "<unread>".
  static std::string stored(const std::string &key, const char *name) {
    CString value("<unread>");
    GetRegValue(key.c_str(), name, value);
    return value.GetString();
  }
  static std::string storedNumber(const std::string &key, const char *name) {
    int32_t value = 0;
    return GetRegValue(key.c_str(), name, &value) ? std::to_string(value) : "<unread>";
  }
  bool registryWritten() const { return fileExists(registryPath); }
  // A string of the agent's table (its module state is current during the session).
  static std::string loaded(UINT id) {
    CString text;
    text.LoadString(id);
    return text.GetString();
  }
  TempDir dir;
  const std::string registryPath = dir.file("registry.reg");
  ScopedEnvironment registry{"TUK_REGISTRY", registryPath};
  ScriptedUser user;
  TukWindow frame = tukFrameCreate("Host", 480, 280);
  std::unique_ptr<AgentSession> session;
};
