// CString::LoadString on Windows: the string table the resource compiler put in a module.
#include "CString.h"
#include "Modules.h"

namespace {

// The string `id` of `module`, UTF-16 in the image, as UTF-8, the multi-byte text of every
// platform.
bool loadFrom(HINSTANCE module, UINT id, std::string &text) {
  const wchar_t *wide = nullptr;
  // A buffer size of 0 hands out the string where it lies in the image, however long it is.
  const int length =
      module != nullptr ? LoadStringW(module, id, reinterpret_cast<wchar_t *>(&wide), 0) : 0;
  if (length <= 0 || wide == nullptr)
    return false;
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide, length, nullptr, 0, nullptr, nullptr);
  text.assign(static_cast<size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, length, text.data(), bytes, nullptr, nullptr);
  return true;
}

} // namespace

BOOL CString::LoadString(UINT id) {
  // A language module that lacks a string leaves the one of the state's own module.
  const HINSTANCE resources = AfxGetResourceHandle();
  const HINSTANCE own = AfxGetModuleState()->m_hCurrentInstanceHandle;
  if (loadFrom(resources, id, text_) || (own != resources && loadFrom(own, id, text_)))
    return TRUE;
  text_.clear();
  return FALSE;
}
