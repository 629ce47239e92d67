// Resource lookup: strings and dialog templates by id in a module's table, with the module
// of the current state as the fallback; CString::LoadString.
#include "Resources.h"

#include "CString.h"

#include <algorithm>
#include <cstring>

namespace {

// Binary search of a table sorted by id.
template <typename Entry> const Entry *findById(const Entry *entries, uint32_t count, UINT id) {
  if (entries == nullptr)
    return nullptr;
  const Entry *end = entries + count;
  const Entry *found = std::lower_bound(
      entries, end, id, [](const Entry &entry, UINT wanted) { return entry.id < wanted; });
  return found != end && found->id == id ? found : nullptr;
}

const ResourceString *stringIn(HINSTANCE module, UINT id) {
  if (module == nullptr || module->resources == nullptr)
    return nullptr;
  return findById(module->resources->strings, module->resources->stringCount, id);
}

const DialogTemplate *dialogIn(HINSTANCE module, UINT id) {
  if (module == nullptr || module->resources == nullptr)
    return nullptr;
  return findById(module->resources->dialogs, module->resources->dialogCount, id);
}

// `lookup` in `module`, else in the current state's own module.
template <typename Entry>
const Entry *withFallback(HINSTANCE module, UINT id, const Entry *(*lookup)(HINSTANCE, UINT)) {
  if (const Entry *found = lookup(module, id))
    return found;
  const HINSTANCE own = AfxGetModuleState()->m_hCurrentInstanceHandle;
  return own != module ? lookup(own, id) : nullptr;
}

} // namespace

const ResourceString *findString(HINSTANCE module, UINT id) {
  return withFallback(module, id, stringIn);
}

const DialogTemplate *findDialog(HINSTANCE module, UINT id) {
  return withFallback(module, id, dialogIn);
}

BOOL CString::LoadString(UINT id) {
  // With no resource handle set, findString's fallback makes it the state's own module.
  const ResourceString *found = findString(AfxGetResourceHandle(), id);
  if (found == nullptr) {
    text_.clear();
    return FALSE;
  }
  text_.assign(found->text, found->length);
  return TRUE;
}
