// The agent module: initAgent, the table of 22 entries, the module's life and its log.
//
// Every entry makes this library's module state current for its duration, so that string
// and dialog lookups see this library's resources (or its language module's).
#include "agent/mhmail.h"

#include "agent/Agent.h"
#include "agent/EudAgent.h"
#include "agent/IMAgent.h"
#include "agent/LiveObjects.h"
#include "agent/NSAgent.h"
#include "agent/PegAgent.h"
#include "cmn/HelpFile.h"
#include "include/tuk/AgentLog.h"
#include "platform/Modules.h"
#include "platform/Resources.h"
#include "store/MailFile.h"
#include "store/MailMsg.h"

#include <cstdlib>
#include <cstring>
#include <memory>

AGENT_LOG_SOURCE(".\\mhmail");

extern const ResourceTable agentResourceTable;

LogSink logSink = nullptr;
uint32_t logEnabled = 0;

namespace {

// The library's application object: it only swaps the framework's help file path for the
// common library's.
class CMhmailApp : public CWinApp {
public:
  CMhmailApp() : CWinApp(nullptr) {
    std::free(const_cast<char *>(m_pszHelpFilePath));
    m_pszHelpFilePath = strdup(GetHelpFilePath());
  }
};

CMhmailApp theApp;

// Plain statics with constant initialisation: nothing runs for them at load.
TUK_LIBRARY_MODULE(agentModule, agentResourceTable);
AFX_MODULE_STATE moduleState = {TUK_LIBRARY_INSTANCE(agentModule),
                                TUK_LIBRARY_INSTANCE(agentModule), &theApp};

CMHAgent *theAgent = nullptr;
int32_t agentInitCount = 0;
HMODULE languageModule = nullptr;
AgentEntryTable entryTable;

#define AGENT_ENTRY_GUARD AFX_MAINTAIN_STATE moduleStateGuard(&moduleState)

template <class Agent> CMHAgent *makeAgent(const CString &language, const char *agentKey) {
  return new Agent(language, agentKey);
}

struct ClientChoice {
  const char *tag;
  CMHAgent *(*make)(const CString &language, const char *agentKey);
};

// Searched in this order; the first tag found anywhere in the key wins.
const ClientChoice clientChoices[] = {
    {"MHEudora", makeAgent<CEudoraAgent>},
    {"MHInternet", makeAgent<CInternetMailAgent>},
    {"MHNetscape", makeAgent<CNetscapeAgent>},
    {"MHPegasus", makeAgent<CPegasusAgent>},
};

CMHAgent *chooseAgent(const CString &language, const char *agentKey) {
  for (const ClientChoice &choice : clientChoices) {
    if (std::strstr(agentKey, choice.tag) != nullptr)
      return choice.make(language, agentKey);
  }
  return nullptr;
}

// Objects from an openObject that returned 0, not yet closed. They outlive the agent: a
// message needs nothing of it once built.
LiveObjects &liveObjects() {
  static LiveObjects objects;
  return objects;
}

// The message behind a host's object handle when it is live and its signature holds; null
// otherwise. A handle that is not live is never read.
CMailMsg *liveObject(AgentHandle object) {
  if (!liveObjects().contains(object))
    return nullptr;
  CMailMsg *message = reinterpret_cast<CMailMsg *>(object);
  if (message->signature != kMessageSignature) {
    AGENT_LOG("Bad signature: 0x%X", message->signature);
    return nullptr;
  }
  return message;
}

int32_t findFirstObjectHandle(uint32_t unused, AgentHandle *search, ObjectRecord *record,
                              int32_t *time) {
  AGENT_ENTRY_GUARD;
  AGENT_LOG("findFirstObjectHandle");
  if (!theAgent || !search || !record)
    return StatusNoMoreObjects;
  return theAgent->findFirstObjectHandle(unused, search, record, time);
}

int32_t findNextObjectHandle(AgentHandle search, ObjectRecord *record, int32_t *time) {
  AGENT_ENTRY_GUARD;
  AGENT_LOG("findNextObjectHandle");
  if (!theAgent || !record)
    return StatusNoMoreObjects;
  return theAgent->findNextObjectHandle(search, record, time);
}

int32_t closeFindObjectHandle(AgentHandle search) {
  AGENT_ENTRY_GUARD;
  AGENT_LOG("closeFindObjectHandle");
  return theAgent ? theAgent->closeFindObjectHandle(search) : StatusOk;
}

int32_t keepObject(const ObjectRecord *record, uint32_t) {
  AGENT_ENTRY_GUARD;
  AGENT_LOG("keepObject");
  if (!record)
    return 0;
  const int32_t stamp = fileStamp(record->path);
  return (stamp != 0 && record->mailboxStamp >= stamp) ? 1 : 0;
}

int32_t openObject(AgentHandle *object, const ObjectRecord *record, int32_t *time) {
  AGENT_ENTRY_GUARD;
  AGENT_LOG("openObject");
  if (!theAgent || !object || !record)
    return StatusMailFileFailed;
  const int32_t status = theAgent->openObject(object, record, time);
  if (status == StatusOk)
    liveObjects().add(*object);
  return status;
}

int32_t readObject(AgentHandle object, void *buffer, uint32_t wanted, uint32_t *got) {
  AGENT_ENTRY_GUARD;
  CMailMsg *message = liveObject(object);
  if (!message)
    return StatusBadSignature;
  uint32_t ignored;
  return message->read(buffer, buffer ? wanted : 0, got ? got : &ignored);
}

int32_t getObjectProperties(AgentHandle object, void *buffer, uint32_t capacity, uint32_t *used,
                            uint32_t *count) {
  AGENT_ENTRY_GUARD;
  const CMailMsg *message = liveObject(object);
  if (!message)
    return StatusBadSignature;
  uint32_t ignoredUsed, ignoredCount;
  return message->getProperties(static_cast<unsigned char *>(buffer), buffer ? capacity : 0,
                                used ? used : &ignoredUsed, count ? count : &ignoredCount);
}

int32_t seekObject(AgentHandle object, int32_t origin, int32_t offset) {
  AGENT_ENTRY_GUARD;
  CMailMsg *message = liveObject(object);
  if (!message)
    return StatusBadSignature;
  return message->seek(origin, offset);
}

int32_t tellObject(AgentHandle object, uint32_t *position) {
  AGENT_ENTRY_GUARD;
  const CMailMsg *message = liveObject(object);
  if (!message)
    return StatusBadSignature;
  uint32_t ignored;
  return message->tell(position ? position : &ignored);
}

int32_t unsupportedObjectCall(uint32_t, uint32_t, uint32_t) {
  AGENT_ENTRY_GUARD;
  return -1;
}

int32_t closeObject(AgentHandle object) {
  AGENT_ENTRY_GUARD;
  AGENT_LOG("closeObject");
  std::unique_ptr<CMailMsg> message(liveObject(object));
  if (!message)
    return StatusBadSignature;
  liveObjects().remove(object);
  return StatusOk;
}

int32_t reservedObjectCall(uint32_t, uint32_t) {
  AGENT_ENTRY_GUARD;
  return 0;
}

int32_t propPageInit(AgentHandle parentWindow, uint32_t unused, AgentHandle *pageWindow) {
  AGENT_ENTRY_GUARD;
  if (!theAgent || !pageWindow)
    return 0;
  return theAgent->propPageInit(parentWindow, unused, pageWindow);
}

int32_t Validate(int32_t commit) {
  AGENT_ENTRY_GUARD;
  return theAgent ? theAgent->Validate(commit) : 1;
}

int32_t propPageClose() {
  AGENT_ENTRY_GUARD;
  return theAgent ? theAgent->propPageClose() : 0;
}

void propPageFocus() {
  AGENT_ENTRY_GUARD;
  if (theAgent)
    theAgent->propPageFocus();
}

int32_t getObjectIcon(uint32_t unused, int32_t *smallIcon, int32_t *largeIcon) {
  AGENT_ENTRY_GUARD;
  int32_t ignoredSmall, ignoredLarge;
  smallIcon = smallIcon ? smallIcon : &ignoredSmall;
  largeIcon = largeIcon ? largeIcon : &ignoredLarge;
  if (!theAgent) {
    *smallIcon = *largeIcon = 0;
    return 0;
  }
  return theAgent->getObjectIcon(unused, smallIcon, largeIcon);
}

int32_t RunObject(const ObjectRecord *record) {
  AGENT_ENTRY_GUARD;
  if (!theAgent || !record)
    return StatusOpenFailed;
  return theAgent->RunObject(record);
}

int32_t getPropertyTemplates(void *buffer, uint32_t capacity, uint32_t *needed, uint32_t *count) {
  AGENT_ENTRY_GUARD;
  if (!theAgent || !needed || !count)
    return -1;
  return theAgent->getPropertyTemplates(buffer, buffer ? capacity : 0, needed, count);
}

uint32_t getLogFlag() {
  AGENT_ENTRY_GUARD;
  return logEnabled;
}

void setLogFlag(uint32_t flag) {
  AGENT_ENTRY_GUARD;
  logEnabled = flag;
}

int32_t terminateAgent() {
  AGENT_ENTRY_GUARD;
  // A termination beyond the last open initialisation has nothing to release, and must not
  // leave the count below 0: the next two initialisations would both build an agent.
  if (agentInitCount <= 0)
    return 0;
  if (--agentInitCount > 0)
    return 0;
  if (languageModule) {
    FreeLibrary(languageModule);
    languageModule = nullptr;
    // Strings must never be looked up in a released module.
    AfxSetResourceHandle(TUK_LIBRARY_INSTANCE(agentModule));
  }
  // Searches the host left open end with the agent, which owns them.
  delete theAgent;
  theAgent = nullptr;
  AGENT_LOG("tuk_mhmail.dll terminating");
  return 0;
}

void fillEntryTable() {
  entryTable = AgentEntryTable{
      findFirstObjectHandle,
      findNextObjectHandle,
      closeFindObjectHandle,
      keepObject,
      openObject,
      readObject,
      getObjectProperties,
      seekObject,
      tellObject,
      unsupportedObjectCall,
      closeObject,
      reservedObjectCall,
      propPageInit,
      Validate,
      propPageClose,
      propPageFocus,
      getObjectIcon,
      RunObject,
      getPropertyTemplates,
      getLogFlag,
      setLogFlag,
      terminateAgent,
  };
}

void fillResult(const char *agentKey, AgentResult *result) {
  result->entryTable = &entryTable;
  result->fixedWord1 = 0x10001;
  result->fixedWord2 = 1;
  result->fixedWord3 = 1;
  if (theAgent) {
    theAgent->getAgentName(agentKey, &result->agentName);
  } else {
    nameScratch.Empty();
    result->agentName = nameScratch.GetString();
  }
}

} // namespace

AFX_MODULE_STATE *agentModuleState() {
  return &moduleState;
}

extern "C" __attribute__((visibility("default"))) int32_t initAgent(const AgentParams *params,
                                                                    AgentResult *result) {
  AGENT_ENTRY_GUARD;
  const char *agentKey = params && params->agentKey ? params->agentKey : "";
  if (++agentInitCount > 1) {
    // A repeat initialisation changes nothing but the agent's key.
    if (result)
      fillResult(agentKey, result);
    return 0;
  }

  logSink = params ? params->logSink : nullptr;
  AGENT_LOG("tuk_mhmail.dll initialising!");
  const CString language(params ? params->language : nullptr);
  AGENT_LOG("Language string: %s", language.GetString());
  if (language == "EN") {
    languageModule = nullptr;
    AfxSetResourceHandle(TUK_LIBRARY_INSTANCE(agentModule));
  } else {
    languageModule = LoadLibraryA(CString("tuk_mhmail") + language);
    AfxSetResourceHandle(languageModule ? languageModule : TUK_LIBRARY_INSTANCE(agentModule));
  }

  theAgent = chooseAgent(language, agentKey);
  fillEntryTable();
  if (result)
    fillResult(agentKey, result);
  AGENT_LOG("tuk_mhmail.dll initialisation complete");
  return 0;
}
