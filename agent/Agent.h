// CMHAgent: the module's one agent, to which the host's entries forward.
//
// The four concrete agents agree in everything but the classes they make (mail file, index,
// settings page) and the numbers of ClientTraits; the operations are written once here. The
// settings and the viewer are in settings/.
#pragma once

#include "agent/LiveSearches.h"
#include "agent/ObjectMailbox.h"
#include "include/tuk/AgentAbi.h"
#include "platform/CString.h"
#include "platform/Object.h"
#include "platform/WinTypes.h"

#include <cstdint>
#include <memory>

class CMailFile;
class CMailIndex;
class CMailMsg;
class CPropPage;
class CWnd;

// What tells one client's agent from another's, besides the classes it makes.
struct ClientTraits {
  UINT displayNameId; // also the caption of the viewer's message box
  const char *defaultMailExt;
  const char *defaultCtrlExt;
  UINT programNameId; // the program file whose icons the client shows
  bool crlfBody;      // the viewer shows the body with every LF turned into CR LF
};

class CMHAgent : public CObject {
public:
  explicit CMHAgent(const ClientTraits &traits);
  ~CMHAgent() override;
  CMHAgent(const CMHAgent &) = delete;
  CMHAgent &operator=(const CMHAgent &) = delete;

  virtual int32_t findFirstObjectHandle(uint32_t unused, AgentHandle *search, ObjectRecord *record,
                                        int32_t *time);
  virtual int32_t openObject(AgentHandle *object, const ObjectRecord *record, int32_t *time);
  // Makes the settings page as a hidden child of `parentWindow` and gives its window handle
  // (0 when the window can't be made). Here the plain page of template 129. 0.
  virtual int32_t propPageInit(AgentHandle parentWindow, uint32_t unused, AgentHandle *pageWindow);
  // The page's Validate; 1 with no page open.
  virtual int32_t Validate(int32_t commit);
  // Moves the focus into the page.
  virtual void propPageFocus();
  // Destroys the page's window and the page, storing nothing. 0.
  virtual int32_t propPageClose();
  // The client program's icon indices, cached once both are known. 0.
  virtual int32_t getObjectIcon(uint32_t unused, int32_t *smallIconOut, int32_t *largeIconOut);
  // Shows the message a record names in the modal View Email window, or tells the user to
  // reindex when it is no longer there (0); 110 when the mailbox can't be opened.
  virtual int32_t RunObject(const ObjectRecord *record);
  virtual int32_t getPropertyTemplates(void *buffer, uint32_t capacity, uint32_t *needed,
                                       uint32_t *count);
  // Loads the display name into the module's name string, points `name` at it, and takes
  // `agentKey` as the agent's key. 0.
  virtual int32_t getAgentName(const char *agentKey, const char **name);
  // The client's default mail and control file extensions, each replaced by its registry
  // value where there is one. 2, always.
  virtual int32_t getFileExtensions(CString &mailExt, CString &ctrlExt);

  // Go on with and end a live search of `searches`. A handle that is not live is never read:
  // it gets 18 from the first and nothing happens in the second (which returns 0 always).
  int32_t findNextObjectHandle(AgentHandle search, ObjectRecord *record, int32_t *time);
  int32_t closeFindObjectHandle(AgentHandle search);

  // The key of the values beside the client's own key: agentKeyName up to `tag`, then
  // fileKeyName. Null when the tag is absent from the key or starts it.
  std::unique_ptr<CString> getFileAgentKey(const CString &tag) const;
  // Reads MailPath and then ExePath under the agent key; a value that can't be read leaves
  // its string as it was. 0.
  int getRegistrySettings(CString &mailPath, CString &exePath);
  // Writes MailPath and then ExePath under the agent key, stopping at the first failure.
  // 0, or -1 when a write failed.
  int setRegistrySettings(const CString &mailPath, const CString &exePath);

  LiveSearches searches;           // the searches the host holds open, which own their indexes
  CMailIndex *mailIndex = nullptr; // the search last started, continued or closed
  ObjectMailbox objectMailbox;     // the mailbox that the last openObject mapped, kept for the next
  std::unique_ptr<CPropPage> propPage; // the open settings page; closed with the agent
  CString agentKeyName;
  int32_t largeIcon = 0;
  int32_t smallIcon = 0;
  const CString mailPathName{"MailPath"};
  const CString exePathName{"ExePath"};
  const CString mailFileExtName{"MailFileExt"};
  const CString ctrlFileExtName{"CtrlFileExt"};
  const CString fileKeyName{"File"};

protected:
  using PageMaker = std::unique_ptr<CPropPage> (*)(CWnd *parent);

  virtual std::unique_ptr<CMailFile> newMailFile() const = 0;
  virtual std::unique_ptr<CMailIndex> newMailIndex() const = 0;
  // What the client's page shows, from the registry: the two directories, and for Eudora the
  // attachment flag. Values that can't be read leave their places as they were.
  virtual void readSettings(CString &mailPath, CString &exePath, int32_t &attach);
  // The store step: the page's values into the registry. A failed write is only logged.
  virtual void writeSettings(const CPropPage &page);

  // propPageInit with the page that `makePage` makes, its fields loaded from the registry
  // first when `loadSettings` is set. A page still open is closed first.
  int32_t openPage(AgentHandle parentWindow, AgentHandle *pageWindow, PageMaker makePage,
                   bool loadSettings);
  // A client's Validate: the page's check (commit 0) or store step, then, for a store step
  // the page allows with commit exactly 1, writeSettings. The page's result.
  int32_t validateAndStore(int32_t commit);

  const ClientTraits &traits_;
};

// A client's agent: the classes it makes.
template <class MailFile, class MailIndex, class PropPage> class CClientAgent : public CMHAgent {
public:
  using CMHAgent::CMHAgent;

  // The client's page, showing the registry's values.
  int32_t propPageInit(AgentHandle parentWindow, uint32_t, AgentHandle *pageWindow) override {
    return openPage(parentWindow, pageWindow, &newPage, true);
  }
  int32_t Validate(int32_t commit) override { return validateAndStore(commit); }

protected:
  static std::unique_ptr<CPropPage> newPage(CWnd *parent) {
    return std::make_unique<PropPage>(parent);
  }
  std::unique_ptr<CMailFile> newMailFile() const override { return std::make_unique<MailFile>(); }
  std::unique_ptr<CMailIndex> newMailIndex() const override {
    return std::make_unique<MailIndex>();
  }
};

// The module's display-name string, into which agentName points.
extern CString nameScratch;

// The message's date as the host gets it: through mktime in local time, low 32 bits.
int32_t messageTime(const CMailMsg &message);
