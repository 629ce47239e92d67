// CPropPage: the plain page, the folder pickers and the path of the folder a user chose.
#include "settings/PropPage.h"

#include "platform/Unicode.h"
#include "resources/resource.h"
#include "settings/ShellHandles.h"
#include "store/MallocPtr.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t kDisplayNameSize = 260;

// A wide name from the shell into `path`, through the code page. The shell's copy is freed
// on every way out: nothing else would free it.
int assignWideName(WCHAR *wide, CString &path) {
  const TaskMem<WCHAR> shellCopy(wide);
  if (wide == nullptr)
    return 0;
  const int size = WideCharToMultiByte(CP_ACP, 0, wide, -1, nullptr, 0, nullptr, nullptr) + 1;
  const MallocPtr<char> bytes(static_cast<char *>(std::calloc(static_cast<size_t>(size), 1)));
  if (!bytes)
    return 0;
  WideCharToMultiByte(CP_ACP, 0, wide, -1, bytes.get(), size, nullptr, nullptr);
  path = bytes.get();
  return 1;
}

} // namespace

CPropPage::CPropPage(CWnd *parent) : CPropPage(IDD_PROP_PAGE, parent) {}

CPropPage::CPropPage(UINT templateId, CWnd *parent)
    : CDialog(templateId, parent), templateId(templateId) {}

CPropPage::~CPropPage() = default;

const MessageMap *CPropPage::GetMessageMap() const {
  static const MessageMap map = {CDialog::GetMessageMap(), nullptr, 0};
  return &map;
}

void CPropPage::DoDataExchange(CDataExchange *) {}

BOOL CPropPage::OnInitDialog() {
  CDialog::OnInitDialog();
  return 1;
}

void CPropPage::OnOK() {}

void CPropPage::OnCancel() {}

int32_t CPropPage::Validate(int32_t) {
  return 1;
}

void CPropPage::setInitialFocus() {}

int CPropPage::browseForExe(UINT titleId, CString &path) {
  return browseForFolder(titleId, path);
}

int CPropPage::browseForMail(UINT titleId, CString &path) {
  return browseForFolder(titleId, path);
}

int CPropPage::browseForFolder(UINT titleId, CString &path) {
  CString title;
  title.LoadString(titleId);
  char displayName[kDisplayNameSize] = {};
  BROWSEINFOA info{};
  info.hwndOwner = m_hWnd;
  info.pidlRoot = nullptr; // the root of the namespace, whatever the field holds
  info.pszDisplayName = displayName;
  info.lpszTitle = title;
  info.ulFlags = BIF_RETURNONLYFSDIRS;
  const ComApartment com;
  const ItemList chosen(SHBrowseForFolderA(&info));
  if (!chosen)
    return 0;
  IShellFolder *desktop = nullptr;
  SHGetDesktopFolder(&desktop);
  const ShellRef<IShellFolder> root(desktop);
  // A folder whose name can't be had is chosen all the same, with an empty path.
  getPathFromIdList(root.get(), chosen.get(), SHGDN_FORPARSING, path);
  return 1;
}

int CPropPage::getPathFromIdList(IShellFolder *folder, LPCITEMIDLIST list, DWORD flags,
                                 CString &path) {
  if (folder == nullptr)
    return 0;
  STRRET name{};
  if (folder->GetDisplayNameOf(list, flags, &name) != S_OK)
    return 0;
  switch (name.uType) {
  case STRRET_WSTR:
    return assignWideName(name.pOleStr, path);
  case STRRET_OFFSET:
    path = reinterpret_cast<const char *>(list) + name.uOffset;
    return 1;
  case STRRET_CSTR:
    path = CString(name.cStr, static_cast<int>(strnlen(name.cStr, sizeof name.cStr)));
    return 1;
  default:
    return 0;
  }
}
