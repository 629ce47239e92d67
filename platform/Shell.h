// The shell calls the agent makes: the folder picker (BROWSEINFOA) with the item identifier
// lists (ITEMIDLIST), the desktop folder (IShellFolder) and the allocator (IMalloc) it works
// with, and the icon indices of files (SHFILEINFOA).
//
// An item identifier list here holds one item: the folder's full path, zero-terminated, in
// the platform's multi-byte code page. Lists, and the wide names that GetDisplayNameOf hands
// out, come from the shell's allocator; the caller frees them with it (or CoTaskMemFree).
#pragma once

#include "Window.h"

#include <cstddef>
#include <cstdint>

#ifdef _WIN32
#include <shlobj.h>
#else

typedef int32_t HRESULT;
typedef uint32_t ULONG;
typedef char16_t WCHAR;

enum : HRESULT { S_OK = 0, E_INVALIDARG = static_cast<HRESULT>(0x80070057u) };

#pragma pack(push, 1)
struct SHITEMID {
  uint16_t cb; // bytes of this item, cb itself included; 0 ends the list
  unsigned char abID[1];
};
#pragma pack(pop)

struct ITEMIDLIST {
  SHITEMID mkid;
};
typedef ITEMIDLIST *LPITEMIDLIST;
typedef const ITEMIDLIST *LPCITEMIDLIST;

// A name as GetDisplayNameOf gives it, in one of three forms.
enum : UINT { STRRET_WSTR = 0, STRRET_OFFSET = 1, STRRET_CSTR = 2 };

struct STRRET {
  UINT uType;
  union {
    WCHAR *pOleStr; // STRRET_WSTR: from the shell's allocator, for the caller to free
    UINT uOffset;   // STRRET_OFFSET: the text lies this many bytes into the list itself
    char cStr[260]; // STRRET_CSTR: the text itself
  };
};

enum : DWORD { SHGDN_NORMAL = 0, SHGDN_FORPARSING = 0x8000 };

// The shell's allocator.
class IMalloc {
public:
  virtual void *Alloc(size_t size) = 0;
  virtual void Free(void *block) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;

protected:
  ~IMalloc() = default;
};

// A folder of the shell's namespace.
class IShellFolder {
public:
  // The name of the item that `list` names below this folder. SHGDN_FORPARSING gives the file
  // system path. S_OK, or an error with `name` untouched.
  virtual HRESULT GetDisplayNameOf(LPCITEMIDLIST list, DWORD flags, STRRET *name) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;

protected:
  ~IShellFolder() = default;
};

void *CoTaskMemAlloc(size_t size);
void CoTaskMemFree(void *block);

// COM needs no setting up here: any thread may call the shell. S_OK, and nothing to undo.
enum : DWORD { COINIT_APARTMENTTHREADED = 0x2 };
inline HRESULT CoInitializeEx(void *, DWORD) {
  return S_OK;
}
inline void CoUninitialize() {}

// The root of the namespace. The desktop names a folder by its path as STRRET_WSTR, or, when
// the path's bytes are no valid text of the code page, as STRRET_OFFSET into the list.
HRESULT SHGetDesktopFolder(IShellFolder **folder);
HRESULT SHGetMalloc(IMalloc **allocator);

typedef int (*BFFCALLBACK)(HWND window, UINT message, LPARAM lParam, LPARAM data);

struct BROWSEINFOA {
  HWND hwndOwner;
  LPCITEMIDLIST pidlRoot; // null: the desktop
  char *pszDisplayName;   // at least 260 bytes: gets the chosen folder's name
  const char *lpszTitle;
  UINT ulFlags;
  BFFCALLBACK lpfn;
  LPARAM lParam;
  int iImage;
};

enum : UINT { BIF_RETURNONLYFSDIRS = 0x1 };

// Asks the process-wide user (WindowApi.h) for a folder, starting at the root. The chosen
// folder's list, or null when the user cancelled, chose what is not an existing directory, or
// no user is installed.
LPITEMIDLIST SHBrowseForFolderA(BROWSEINFOA *info);

struct HICON__;
typedef HICON__ *HICON;

struct SHFILEINFOA {
  HICON hIcon;
  int iIcon;
  DWORD dwAttributes;
  char szDisplayName[260];
  char szTypeName[80];
};

enum : UINT { SHGFI_SMALLICON = 0x1, SHGFI_SYSICONINDEX = 0x4000 };

// With SHGFI_SYSICONINDEX (and SHGFI_SMALLICON for the small list): the index of the file's
// icon in the process-wide image list in iIcon, and the list's handle as the result. An
// existing regular file has a stable index, never 0, the same in both lists; anything else
// gives 0 and leaves the record as it was. Other flags give 0.
DWORD_PTR SHGetFileInfoA(const char *path, DWORD attributes, SHFILEINFOA *info, UINT infoSize,
                         UINT flags);

// For tests: the next `count` icon lookups of the small (or the large) list fail, as for a
// missing file. Per thread.
void failIconLookups(bool smallIcons, int count = 1);

#endif // _WIN32
