// CPegasusMailFile, CPegasusMailMsg and CPegasusMailIndex: the Pegasus store, a 128-byte file
// header, then messages cut by 0A 0A 1A.
#pragma once

#include "clients/ClientMailFile.h"
#include "store/MailInd.h"

class CPegasusMailMsg : public CMailMsg {};

class CPegasusMailFile : public CClientMailFile<CPegasusMailMsg> {
public:
  int init(const CString &path) override;
  int nextMessage() override;
};

class CPegasusMailIndex : public CClientMailIndex<CPegasusMailFile> {};
