// CMHAgent::getObjectIcon: the client program's two icon indices, asked of the shell until
// both are known and then kept for the life of the agent.
#include "agent/Agent.h"

#include "include/tuk/AgentLog.h"
#include "settings/ShellHandles.h"
#include "store/MFNList.h"

AGENT_LOG_SOURCE(".\\Agent");

int32_t CMHAgent::getObjectIcon(uint32_t, int32_t *smallIconOut, int32_t *largeIconOut) {
  // 0 means "not known": a pair with a 0 in it is asked for again on the next call.
  if (largeIcon != 0 && smallIcon != 0) {
    *smallIconOut = smallIcon;
    *largeIconOut = largeIcon;
    return 0;
  }
  AGENT_LOG("getObjectIcon called");
  CString mailPath, exePath;
  int32_t attach = 0;
  readSettings(mailPath, exePath, attach);
  CString programName;
  programName.LoadString(traits_.programNameId);
  const CString program = exePath + kPathSeparator + programName;
  AGENT_LOG("Getting icons from [%s]", program.GetString());

  // The image list handle only tells success; the host gets indices into the lists.
  const ComApartment com;
  SHFILEINFOA info{};
  largeIcon =
      SHGetFileInfoA(program, 0, &info, sizeof info, SHGFI_SYSICONINDEX) != 0 ? info.iIcon : 0;
  smallIcon =
      SHGetFileInfoA(program, 0, &info, sizeof info, SHGFI_SYSICONINDEX | SHGFI_SMALLICON) != 0
          ? info.iIcon
          : 0;
  *smallIconOut = smallIcon;
  *largeIconOut = largeIcon;
  return 0;
}
