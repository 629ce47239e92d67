// CMHAgent: opening objects, and the names and extensions of a client.
#include "agent/Agent.h"

#include "cmn/Registry.h"
#include "include/tuk/AgentLog.h"
#include "settings/PropPage.h"
#include "store/LocalTime.h"
#include "store/MailFile.h"
#include "store/MailInd.h"
#include "store/MailMsg.h"
#include "store/MailProps.h"

#include <ctime>

AGENT_LOG_SOURCE(".\\Agent");

CString nameScratch;

CMHAgent::CMHAgent(const ClientTraits &traits) : traits_(traits) {}

CMHAgent::~CMHAgent() {
  // Searches the host left open end with the agent, whose table owns them.
  if (!searches.empty())
    AGENT_LOG(" and deleting mail index\n");
}

int32_t messageTime(const CMailMsg &message) {
  int32_t day, month, year, hour, minute, second;
  message.getDateFields(&day, &month, &year, &hour, &minute, &second);
  struct tm fields = {};
  fields.tm_mday = day;
  fields.tm_mon = month;
  fields.tm_year = year;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  // Nothing in a message says whether daylight saving was in force: mktime decides.
  return static_cast<int32_t>(static_cast<uint32_t>(localTimeToSeconds(fields)));
}

int32_t CMHAgent::openObject(AgentHandle *object, const ObjectRecord *record, int32_t *time) {
  const CString path(record->path);
  CMailFile *mailFile = objectMailbox.reusable(path);
  if (!mailFile) {
    objectMailbox.drop(); // one mailbox mapped at a time
    std::unique_ptr<CMailFile> opened = newMailFile();
    if (opened->init(path) < 0) {
      AGENT_LOG("Couldn't initialise mailFile\n");
      return StatusMailFileFailed;
    }
    mailFile = &objectMailbox.keep(std::move(opened));
  }
  std::unique_ptr<CMailMsg> message = mailFile->getMsgAt(record->offset, record->length);
  if (!message) {
    AGENT_LOG("Couldn't get message from mailFile.                    Offset: %d, Size: %d\n",
              static_cast<int>(record->offset), static_cast<int>(record->length));
    *object = AGENT_INVALID_HANDLE;
    return StatusOpenFailed;
  }
  if (!message->verifyChecksum(record->checksum)) {
    AGENT_LOG("Checksums didn't verify\n");
    *object = AGENT_INVALID_HANDLE;
    return StatusOpenFailed;
  }
  if (time) {
    // An object is opened on its own: the time zone is taken as it stands now.
    refreshTimeZone();
    *time = messageTime(*message);
  }
  *object = reinterpret_cast<AgentHandle>(message.release());
  return StatusOk;
}

int32_t CMHAgent::getAgentName(const char *agentKey, const char **name) {
  nameScratch.LoadString(traits_.displayNameId);
  *name = nameScratch.GetString();
  agentKeyName = agentKey;
  return 0;
}

int32_t CMHAgent::getFileExtensions(CString &mailExt, CString &ctrlExt) {
  mailExt = traits_.defaultMailExt;
  ctrlExt = traits_.defaultCtrlExt;
  GetRegValue(agentKeyName, mailFileExtName, mailExt);
  GetRegValue(agentKeyName, ctrlFileExtName, ctrlExt);
  AGENT_LOG("Mail file ext is %s\n", mailExt.GetString());
  AGENT_LOG("Ctrl file ext is %s\n", ctrlExt.GetString());
  return 2;
}

int32_t CMHAgent::getPropertyTemplates(void *buffer, uint32_t capacity, uint32_t *needed,
                                       uint32_t *count) {
  return getPropertyNames(buffer, capacity, needed, count);
}
