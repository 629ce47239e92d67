// CInternetMailMailFile, CInternetMailMailMsg and CInternetMailMailIndex: the Internet Mail
// store, whose mail files are cut by the four bytes 00 7F 00 7F.
#pragma once

#include "clients/ClientMailFile.h"
#include "store/MailInd.h"

class CInternetMailMailMsg : public CMailMsg {};

class CInternetMailMailFile : public CClientMailFile<CInternetMailMailMsg> {
public:
  int init(const CString &path) override;
};

class CInternetMailMailIndex : public CClientMailIndex<CInternetMailMailFile> {};
