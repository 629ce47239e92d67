// CMailFilenameList: the tree walk and the pairing of mail and control files.
#include "store/MFNList.h"

#include "include/tuk/AgentLog.h"
#include "platform/DirList.h"

#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

AGENT_LOG_SOURCE(".\\MFNList");

namespace {

enum FileKind { FILE_PLAIN = 0, FILE_DIRECTORY = 1, FILE_DOTS = 2 };

struct FileEntry {
  CString name;
  FileKind kind;
};

using FileLevels = std::vector<std::vector<FileEntry>>;

// `search` up to and including its last separator, the found name, and for a directory a
// separator behind it.
CString makeEntryName(const CString &search, const char *foundName, bool asDirectory) {
  CString name = search.Left(search.ReverseFind(kPathSeparator) + 1);
  name += foundName;
  if (asDirectory)
    name += kPathSeparator;
  return name;
}

// The directory's path followed by the pattern of the search that found it.
CString makeChildSearch(const CString &directoryName, const CString &search) {
  return directoryName + search.Mid(search.ReverseFind(kPathSeparator) + 1);
}

int walkLevel(FileLevels &levels, int level, const CString &search) {
  // Tested first: entering the fifteenth level fails even for an empty directory.
  if (level == kMaxFileLevels)
    return kWalkTooDeep;
  WIN32_FIND_DATAA found;
  HANDLE listing = FindFirstFileA(search, &found);
  if (listing == INVALID_HANDLE_VALUE)
    return kWalkUnreadable;
  std::vector<FileEntry> &entries = levels[static_cast<size_t>(level)];
  const size_t firstNew = entries.size();
  do {
    const bool dots = std::string(found.cFileName) == "." || std::string(found.cFileName) == "..";
    const FileKind kind = dots                              ? FILE_DOTS
                          : (found.dwFileAttributes & 0x10) ? FILE_DIRECTORY
                                                            : FILE_PLAIN;
    entries.push_back({makeEntryName(search, found.cFileName, kind == FILE_DIRECTORY), kind});
  } while (FindNextFileA(listing, &found));
  FindClose(listing);

  // The directory's entries are all listed before any sub-directory is entered. The walks
  // below append to deeper levels only, so this level's entries stay where they are.
  const size_t end = entries.size();
  for (size_t i = firstNew; i < end; ++i) {
    if (entries[i].kind != FILE_DIRECTORY)
      continue;
    const CString childSearch = makeChildSearch(entries[i].name, search);
    const int result = walkLevel(levels, level + 1, childSearch);
    if (result < 0)
      return result;
  }
  return 0;
}

// Whether the walk's entry is a plain entry, which alone can be a mail file: a folder ends
// in the separator, and a "." or ".." entry could otherwise pass for its folder once the
// extension is cut off (with an empty mail extension, "Box/." and the control entry
// "Box/.snm" cut to the stem of the folder "Box/").
bool isPlainEntry(const CString &entry) {
  const int length = entry.GetLength();
  if (length == 0 || entry[length - 1] == kPathSeparator)
    return false;
  const CString last = entry.Mid(entry.ReverseFind(kPathSeparator) + 1);
  return last != "." && last != "..";
}

// The extension of a path's last component, dot included; empty when it has no dot.
CString extensionOf(const CString &path) {
  const int lastSeparator = path.ReverseFind(kPathSeparator);
  const CString component = path.Mid(lastSeparator + 1);
  const int dot = component.ReverseFind('.');
  return dot < 0 ? CString() : component.Mid(dot);
}

// The relative stem: from behind the mail directory up to `extLength` bytes before the end.
CString relativeStem(const CString &entry, const CString &mailDir, int extLength) {
  const int found = entry.Find(mailDir);
  const int start = (found < 0 ? 0 : found) + mailDir.GetLength();
  return entry.Mid(start, entry.GetLength() - start - extLength);
}

std::string foldCase(const CString &text) {
  std::string folded = text.bytes();
  for (char &ch : folded)
    ch = asciiToLower(ch);
  return folded;
}

} // namespace

int FindFiles(CStringList &out, const CString &search) {
  FileLevels levels(kMaxFileLevels);
  const int result = walkLevel(levels, 0, search);
  if (result < 0)
    return result;
  for (const std::vector<FileEntry> &level : levels)
    for (const FileEntry &entry : level)
      out.AddTail(entry.name);
  return 0;
}

int CMailFilenameList::findMailboxes(const CString &mailDir, const CString &mailExt,
                                     const CString &ctrlExt) {
  CString mailExtLower = mailExt;
  CString ctrlExtLower = ctrlExt;
  mailExtLower.MakeLower();
  ctrlExtLower.MakeLower();
  return pairMailboxes(mailDir, mailExtLower, ctrlExtLower) ? GetCount() : -1;
}

bool CMailFilenameList::pairMailboxes(const CString &mailDir, const CString &mailExt,
                                      const CString &ctrlExt) {
  CString ctrlExtUpper = ctrlExt;
  ctrlExtUpper.MakeUpper();
  const CString search = mailDir + kPathSeparator + "*.*";
  CStringList all;
  const int walked = FindFiles(all, search);
  AGENT_LOG("findMailboxes, FindFiles returned %d searching for %s", walked, search.GetString());
  if (walked < 0)
    return false;
  AGENT_LOG("findMailboxes, List initially %d elements long", all.GetCount());

  // The mail files by their stems, case folded. The first of equal stems pairs first, and
  // each pairs at most once. Each keeps its true path: the file system tells case apart.
  std::unordered_map<std::string, std::deque<const CString *>> stems;
  for (POSITION at = all.GetHeadPosition(); at;) {
    const CString &entry = all.GetNext(at);
    if (isPlainEntry(entry) && extensionOf(entry).CompareNoCase(mailExt) == 0)
      stems[foldCase(relativeStem(entry, mailDir, mailExt.GetLength()))].push_back(&entry);
  }

  for (POSITION at = all.GetHeadPosition(); at;) {
    const CString &entry = all.GetNext(at);
    // A case-sensitive test anywhere in the path: ".toc" and ".TOC" count, ".Toc" does not.
    if (entry.Find(ctrlExt) < 0 && entry.Find(ctrlExtUpper) < 0)
      continue;
    auto match = stems.find(foldCase(relativeStem(entry, mailDir, ctrlExt.GetLength())));
    if (match == stems.end() || match->second.empty())
      continue;
    AddTail(*match->second.front());
    match->second.pop_front();
  }

  if (IsEmpty())
    AGENT_LOG("FindMailboxes, No mailboxes");
  else
    AGENT_LOG("FindMailboxes, List now %d elements long", GetCount());
  return true;
}

std::unique_ptr<CString> CMailFilenameList::getFirstMailbox() {
  cursor = GetHeadPosition();
  return getNextMailbox();
}

std::unique_ptr<CString> CMailFilenameList::getNextMailbox() {
  if (!cursor)
    return nullptr;
  return std::make_unique<CString>(GetNext(cursor));
}
