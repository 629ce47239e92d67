// CMHAgent: the module's one agent, to which the host's entries forward.
//
// The four concrete agents agree in everything but the classes they make, their display name
// and their default file extensions; those come from the hooks at the end, and the operations
// are written once here.
#pragma once

#include "agent/AgentAbi.h"
#include "platform/CString.h"
#include "platform/Object.h"
#include "platform/WinTypes.h"

#include <cstdint>
#include <memory>

class CMailFile;
class CMailIndex;
class CMailMsg;
class CPropPage;

// What tells one client's agent from another's, besides the classes it makes.
struct ClientTraits {
  UINT displayNameId;
  const char *defaultMailExt;
  const char *defaultCtrlExt;
};

class CMHAgent : public CObject {
public:
  explicit CMHAgent(const ClientTraits &traits) : traits_(traits) {}
  ~CMHAgent() override;
  CMHAgent(const CMHAgent &) = delete;
  CMHAgent &operator=(const CMHAgent &) = delete;

  virtual int32_t findFirstObjectHandle(uint32_t unused, AgentHandle *search,
                                        ObjectRecord *record, int32_t *time);
  virtual int32_t openObject(AgentHandle *object, const ObjectRecord *record, int32_t *time);
  virtual int32_t propPageInit(AgentHandle parentWindow, uint32_t unused, AgentHandle *pageWindow);
  virtual int32_t Validate(int32_t commit);
  virtual void propPageFocus();
  virtual int32_t propPageClose();
  virtual int32_t getObjectIcon(uint32_t unused, int32_t *smallIconOut, int32_t *largeIconOut);
  virtual int32_t RunObject(const ObjectRecord *record);
  virtual int32_t getPropertyTemplates(void *buffer, uint32_t capacity, uint32_t *needed,
                                       uint32_t *count);
  // Loads the display name into the module's name string, points `name` at it, and takes
  // `agentKey` as the agent's key. 0.
  virtual int32_t getAgentName(const char *agentKey, const char **name);
  // The client's default mail and control file extensions, each replaced by its registry
  // value where there is one. 2, always.
  virtual int32_t getFileExtensions(CString &mailExt, CString &ctrlExt);

  int32_t findNextObjectHandle(AgentHandle search, ObjectRecord *record, int32_t *time);
  int32_t closeFindObjectHandle(AgentHandle search);

  CMailIndex *mailIndex = nullptr;  // the search last started, continued or closed
  CPropPage *propPage = nullptr;    // the open settings page
  CString agentKeyName;
  int32_t largeIcon = 0;
  int32_t smallIcon = 0;
  const CString mailPathName{"MailPath"};
  const CString exePathName{"ExePath"};
  const CString mailFileExtName{"MailFileExt"};
  const CString ctrlFileExtName{"CtrlFileExt"};
  const CString fileKeyName{"File"};

protected:
  virtual std::unique_ptr<CMailFile> newMailFile() const = 0;
  virtual std::unique_ptr<CMailIndex> newMailIndex() const = 0;

  const ClientTraits &traits_;

private:
  // Runs the message search from the index's current mailbox and fills the record; the
  // shared second half of both find calls.
  int32_t findMessage(CMailIndex &index, std::unique_ptr<CString> mailbox, ObjectRecord *record,
                      int32_t *time, bool &recordTooSmall);
};

// A client's agent: the classes it makes.
template <class MailFile, class MailIndex> class CClientAgent : public CMHAgent {
public:
  using CMHAgent::CMHAgent;

protected:
  std::unique_ptr<CMailFile> newMailFile() const override { return std::make_unique<MailFile>(); }
  std::unique_ptr<CMailIndex> newMailIndex() const override {
    return std::make_unique<MailIndex>();
  }
};

// The module's display-name string, into which agentName points.
extern CString nameScratch;

// The message's date as the host gets it: through mktime in local time, low 32 bits.
int32_t messageTime(const CMailMsg &message);
