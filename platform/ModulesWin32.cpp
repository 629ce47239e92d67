// moduleDirectory on Windows: the folder of the DLL or program that holds an address.
#include "Modules.h"

#include <cstring>
#include <string>

const char *moduleDirectory(const void *anchor, char *buffer, size_t size) {
  HMODULE module = nullptr;
  if (anchor == nullptr || !GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                                   GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                               static_cast<const char *>(anchor), &module))
    return ".";
  char file[MAX_PATH];
  const DWORD length = GetModuleFileNameA(module, file, sizeof file);
  if (length == 0 || length >= sizeof file)
    return ".";
  const std::string path(file, length);
  const size_t separator = path.find_last_of("\\/");
  if (separator == std::string::npos || buffer == nullptr || separator >= size)
    return ".";
  std::memcpy(buffer, path.data(), separator);
  buffer[separator] = '\0';
  return buffer;
}
