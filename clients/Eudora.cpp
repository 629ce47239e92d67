// CEudoraMailFile: the Eudora store's delimiter.
#include "clients/Eudora.h"

#include "clients/Delimiters.h"

int CEudoraMailFile::init(const CString &path) {
  return initWith(path, kEudoraDelimiter, sizeof kEudoraDelimiter, sizeof kEudoraDelimiter);
}
