// CEudoraAgent's settings: the attachment flag and directory in the key beside its own, and
// the attachments directory that eudora.ini in the mail directory names.
#include "agent/EudAgent.h"

#include "cmn/Registry.h"
#include "include/tuk/AgentLog.h"
#include "platform/Profile.h"
#include "resources/resource.h"

AGENT_LOG_SOURCE(".\\EudAgent");

namespace {

// Empty until a Eudora agent is made; then from the string table, so that a language
// module can replace them.
CString attachDirSuffix; // "/Attach"
CString iniFileSuffix;   // "/eudora.ini"
CString iniSection;      // "Settings"
CString iniKey;          // "AutoReceiveAttachmentsDirectory"

constexpr DWORD kIniValueSize = 260;
// A value of this many bytes or more is not taken (the default neither): the directory stays
// as the caller had it.
constexpr DWORD kTooLongDirectory = 258;

} // namespace

void CEudoraAgent::loadAttachmentStrings() {
  attachDirSuffix.LoadString(IDS_EUD_ATTACH_SUFFIX);
  iniFileSuffix.LoadString(IDS_EUD_INI_SUFFIX);
  iniSection.LoadString(IDS_EUD_INI_SECTION);
  iniKey.LoadString(IDS_EUD_INI_KEY);
}

int CEudoraAgent::getRegistrySettings(CString &mailPath, CString &exePath, int32_t *attach,
                                      CString &attachDir) {
  CMHAgent::getRegistrySettings(mailPath, exePath);
  if (const std::unique_ptr<CString> fileKey = getFileAgentKey(clientKeyName)) {
    if (!GetRegValue(*fileKey, attachName, attach))
      AGENT_LOG("Failed trying to get Attach value\n");
  }
  AGENT_LOG("Attachments: %d\n", static_cast<int>(*attach));
  getAttachmentsDir(mailPath, attachDir);
  return 0;
}

int CEudoraAgent::setRegistrySettings(const CString &mailPath, const CString &exePath,
                                      int32_t attach, const CString &attachDir) {
  if (CMHAgent::setRegistrySettings(mailPath, exePath) < 0)
    return -1;
  const std::unique_ptr<CString> fileKey = getFileAgentKey(clientKeyName);
  if (!fileKey)
    return 0; // the directories are stored; the attachment values have nowhere to go
  if (!SetRegValue(*fileKey, attachName, attach)) {
    AGENT_LOG("Failed trying to set Attach value\n");
    return -1;
  }
  if (!SetRegValue(*fileKey, attachPathName, attachDir)) {
    AGENT_LOG("Failed trying to set Attachment path value\n");
    return -1;
  }
  return 0;
}

int CEudoraAgent::getAttachmentsDir(const CString &mailPath, CString &attachDir) {
  // Looked for in the mail directory the caller holds now, which may not be the stored one.
  const CString defaultDir = mailPath + attachDirSuffix;
  const CString iniFile = mailPath + iniFileSuffix;
  char value[kIniValueSize];
  const DWORD length =
      GetPrivateProfileStringA(iniSection, iniKey, defaultDir, value, kIniValueSize, iniFile);
  if (length < kTooLongDirectory)
    attachDir = value;
  AGENT_LOG("Attachments dir: %s\n", attachDir.GetString());
  return 0;
}

void CEudoraAgent::readSettings(CString &mailPath, CString &exePath, int32_t &attach) {
  CString attachDir; // worked out again whenever it is stored
  getRegistrySettings(mailPath, exePath, &attach, attachDir);
}

void CEudoraAgent::writeSettings(const CPropPage &page) {
  CString attachDir;
  getAttachmentsDir(page.mailPath, attachDir);
  setRegistrySettings(page.mailPath, page.exePath, page.attach, attachDir);
}
