// CEudoraMailFile, CEudoraMailMsg and CEudoraMailIndex: the Eudora store, whose mail files
// are cut by the 12 bytes "From ???@???", wherever they stand.
#pragma once

#include "clients/ClientMailFile.h"
#include "store/MailInd.h"

class CEudoraMailMsg : public CMailMsg {};

class CEudoraMailFile : public CClientMailFile<CEudoraMailMsg> {
public:
  int init(const CString &path) override;
};

class CEudoraMailIndex : public CClientMailIndex<CEudoraMailFile> {};
