// CEudoraAgent: the Eudora agent. Besides the common settings it keeps an "Index Attachments"
// flag and the attachments directory in the key beside its own, and finds that directory in
// eudora.ini.
#pragma once

#include "agent/Agent.h"
#include "clients/Eudora.h"
#include "settings/ClientPages.h"

class CEudoraAgent : public CClientAgent<CEudoraMailFile, CEudoraMailIndex, CEudPropPage> {
public:
  CEudoraAgent(const CString &language, const char *agentKey);

  int32_t openObject(AgentHandle *object, const ObjectRecord *record, int32_t *time) override;

  using CMHAgent::getRegistrySettings;
  using CMHAgent::setRegistrySettings;
  // The common settings, then Attachments from the File key into `attach` (left as it was
  // when it can't be read), then the attachments directory for `mailPath`. 0.
  int getRegistrySettings(CString &mailPath, CString &exePath, int32_t *attach, CString &attachDir);
  // The common settings, then Attachments and EudAttachPath in the File key, stopping at the
  // first failure. Without a File key the two are not stored, and that is no failure.
  // 0, or -1 when a write failed.
  int setRegistrySettings(const CString &mailPath, const CString &exePath, int32_t attach,
                          const CString &attachDir);
  // The attachments directory for the mail directory `mailPath`: AutoReceiveAttachments-
  // Directory of eudora.ini there, else `mailPath` and "/Attach". A directory of 258 bytes or
  // more leaves `attachDir` as it was. 0.
  int getAttachmentsDir(const CString &mailPath, CString &attachDir);

  const CString attachName{"Attachments"};
  const CString attachPathName{"EudAttachPath"};
  const CString clientKeyName{"MHEudora"};

protected:
  void readSettings(CString &mailPath, CString &exePath, int32_t &attach) override;
  void writeSettings(const CPropPage &page) override;

private:
  // The four strings of getAttachmentsDir, from the string table.
  static void loadAttachmentStrings();
};
