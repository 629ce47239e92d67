// CInternetMailMailFile: the Internet Mail store's delimiter.
#include "clients/InternetMail.h"

#include "clients/Delimiters.h"

int CInternetMailMailFile::init(const CString &path) {
  return initWith(path, kInternetMailDelimiter, sizeof kInternetMailDelimiter,
                  sizeof kInternetMailDelimiter);
}
