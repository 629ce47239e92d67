// The folder picker and what its caller needs after it: the item identifier lists of
// folders, the desktop folder that names them, and the shell's allocator.
#include "Shell.h"

#include "Files.h"
#include "Unicode.h"
#include "User.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// The picker's room for a chosen path.
constexpr size_t kFolderCapacity = 4096;
// Where the text of the one item starts inside a list.
constexpr UINT kItemTextOffset = offsetof(SHITEMID, abID);

class ShellAllocator final : public IMalloc {
public:
  void *Alloc(size_t size) override { return CoTaskMemAlloc(size); }
  void Free(void *block) override { CoTaskMemFree(block); }
  // One allocator serves the process for its whole life: counting references changes nothing.
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }
};

// The path that a list from the picker names; false for an empty or malformed list.
bool pathOfList(LPCITEMIDLIST list, std::string &path) {
  if (list == nullptr)
    return false;
  const auto *bytes = reinterpret_cast<const char *>(list);
  uint16_t itemSize = 0;
  std::memcpy(&itemSize, bytes, sizeof itemSize);
  if (itemSize <= kItemTextOffset)
    return false;
  const size_t room = itemSize - kItemTextOffset;
  const void *end = std::memchr(bytes + kItemTextOffset, '\0', room);
  if (end == nullptr)
    return false;
  path.assign(bytes + kItemTextOffset, static_cast<const char *>(end));
  return true;
}

// A list of one item holding `path`, from the shell's allocator; null when it can't be made.
LPITEMIDLIST listOfPath(const std::string &path) {
  const size_t itemSize = kItemTextOffset + path.size() + 1;
  if (itemSize > UINT16_MAX)
    return nullptr;
  auto *bytes = static_cast<char *>(CoTaskMemAlloc(itemSize + sizeof(uint16_t)));
  if (bytes == nullptr)
    return nullptr;
  const auto size = static_cast<uint16_t>(itemSize);
  const uint16_t end = 0;
  std::memcpy(bytes, &size, sizeof size);
  std::memcpy(bytes + kItemTextOffset, path.c_str(), path.size() + 1);
  std::memcpy(bytes + itemSize, &end, sizeof end);
  return reinterpret_cast<LPITEMIDLIST>(bytes);
}

class DesktopFolder final : public IShellFolder {
public:
  HRESULT GetDisplayNameOf(LPCITEMIDLIST list, DWORD flags, STRRET *name) override {
    std::string path;
    if (name == nullptr || !(flags & SHGDN_FORPARSING) || !pathOfList(list, path))
      return E_INVALIDARG;
    const int units =
        MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, path.c_str(), -1, nullptr, 0);
    if (units == 0) {
      // Bytes that UTF-16 can't carry are handed back as they stand in the list.
      name->uType = STRRET_OFFSET;
      name->uOffset = kItemTextOffset;
      return S_OK;
    }
    auto *wide = static_cast<WCHAR *>(CoTaskMemAlloc(static_cast<size_t>(units) * sizeof(WCHAR)));
    if (wide == nullptr)
      return E_INVALIDARG;
    MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, path.c_str(), -1, wide, units);
    name->uType = STRRET_WSTR;
    name->pOleStr = wide;
    return S_OK;
  }
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }
};

ShellAllocator shellAllocator;
DesktopFolder desktopFolder;

bool isDirectory(const std::string &path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

void copyFolderName(const std::string &path, char *displayName) {
  const size_t slash = path.find_last_of('/');
  std::string name =
      slash == std::string::npos || slash + 1 == path.size() ? path : path.substr(slash + 1);
  name.resize(std::min<size_t>(name.size(), 259));
  std::memcpy(displayName, name.c_str(), name.size() + 1);
}

} // namespace

void *CoTaskMemAlloc(size_t size) {
  return std::malloc(size != 0 ? size : 1);
}

void CoTaskMemFree(void *block) {
  std::free(block);
}

HRESULT SHGetDesktopFolder(IShellFolder **folder) {
  if (folder == nullptr)
    return E_INVALIDARG;
  *folder = &desktopFolder;
  return S_OK;
}

HRESULT SHGetMalloc(IMalloc **allocator) {
  if (allocator == nullptr)
    return E_INVALIDARG;
  *allocator = &shellAllocator;
  return S_OK;
}

LPITEMIDLIST SHBrowseForFolderA(BROWSEINFOA *info) {
  if (info == nullptr)
    return nullptr;
  std::string root;
  pathOfList(info->pidlRoot, root);
  std::vector<char> chosen(kFolderCapacity, '\0');
  TukUserEvent event{};
  event.kind = TUK_USER_FOLDER_PICKER;
  event.window = IsWindow(info->hwndOwner) ? reinterpret_cast<TukWindow>(info->hwndOwner) : 0;
  event.text = info->lpszTitle != nullptr ? info->lpszTitle : "";
  event.caption = root.c_str();
  event.flags = info->ulFlags;
  event.folder = chosen.data();
  event.folderCapacity = static_cast<uint32_t>(chosen.size());
  bool answered = false;
  if (askUser(event, answered) != 1 || !answered)
    return nullptr;
  chosen.back() = '\0';
  const std::string path = chosen.data();
  // The picker offers nothing but folders of the file system.
  if (path.empty() || !isDirectory(path))
    return nullptr;
  LPITEMIDLIST list = listOfPath(path);
  if (list != nullptr && info->pszDisplayName != nullptr)
    copyFolderName(path, info->pszDisplayName);
  return list;
}
