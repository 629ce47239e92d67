// CMailFilenameList: the mailboxes below a mail directory, found by a walk of the whole tree
// and a pairing of mail files with their control files by name.
#pragma once

#include "platform/CString.h"
#include "platform/Paths.h"
#include "platform/StringList.h"

#include <memory>

// Walk results: 0, kWalkTooDeep (the walk was about to enter a 15th level), or
// kWalkUnreadable (a directory could not be listed).
constexpr int kMaxFileLevels = 15;
constexpr int kWalkTooDeep = -3;
constexpr int kWalkUnreadable = -4;

// Appends to `out` the path of every entry below the directory of `search` (a path whose
// last component is a pattern), level by level: the directory's own entries, then those of its
// sub-directories in the order they were listed, and so on. Directories end in the separator;
// "." and ".." are listed but never entered, and neither is a symbolic link. On failure `out`
// is left as it was.
int FindFiles(CStringList &out, const CString &search);

class CMailFilenameList : public CStringList {
public:
  CMailFilenameList() = default;
  ~CMailFilenameList() override = default;

  // Appends the full path of every mail file below `mailDir` that has its control file beside
  // it, in the order of the control files in the walk. The count of the list, or -1 when the
  // walk failed. Extensions carry their dot and compare without regard to case; an empty mail
  // extension means files without one. A folder is never a mail file. Each element names the
  // mail file as it really exists.
  int findMailboxes(const CString &mailDir, const CString &mailExt, const CString &ctrlExt);

  // A copy of the first element (rewinding the list), or of the next one; null at the end.
  std::unique_ptr<CString> getFirstMailbox();
  std::unique_ptr<CString> getNextMailbox();

private:
  bool pairMailboxes(const CString &mailDir, const CString &mailExt, const CString &ctrlExt);

  POSITION cursor = nullptr;
};
