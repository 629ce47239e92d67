// Modules on POSIX: LoadLibraryA and FreeLibrary over dlopen, and the file a module came from.
#include "Modules.h"

#include "Files.h"
#include "Resources.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

// Windows' numbers for a module that isn't there and for a file that isn't a loadable one.
constexpr DWORD kErrorModuleNotFound = 126;    // ERROR_MOD_NOT_FOUND
constexpr DWORD kErrorNotLoadableModule = 193; // ERROR_BAD_EXE_FORMAT

// An address inside this library's image: where LoadLibraryA looks when no module is current.
constexpr char kPlatformAnchor = 0;

struct LibraryCloser {
  void operator()(void *handle) const { dlclose(handle); }
};
using LibraryHandle = std::unique_ptr<void, LibraryCloser>;

// The file that holds `anchor`, as the dynamic loader knows it; empty when none does.
std::string fileHolding(const void *anchor) {
  Dl_info info{};
  link_map *map = nullptr;
  if (anchor == nullptr ||
      dladdr1(anchor, &info, reinterpret_cast<void **>(&map), RTLD_DL_LINKMAP) == 0)
    return std::string();
  if (map != nullptr && map->l_name != nullptr && map->l_name[0] != '\0')
    return map->l_name;
  // The main program has no name in the loader's list; the kernel knows its file.
  char program[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", program, sizeof program);
  if (length > 0 && static_cast<size_t>(length) < sizeof program)
    return std::string(program, static_cast<size_t>(length));
  return info.dli_fname != nullptr ? info.dli_fname : "";
}

// `name` in the directory of the current module, with ".so" when its last part has no dot.
std::string libraryPath(const char *name) {
  std::string path = name;
  if (path.find('/') == std::string::npos) {
    const HINSTANCE instance = AfxGetModuleState()->m_hCurrentInstanceHandle;
    const void *anchor =
        instance != nullptr && instance->anchor != nullptr ? instance->anchor : &kPlatformAnchor;
    char directory[PATH_MAX];
    path = std::string(moduleDirectory(anchor, directory, sizeof directory)) + "/" + name;
  }
  const size_t lastPart = path.rfind('/') + 1; // 0 when there is no '/'
  if (path.find('.', lastPart) == std::string::npos)
    path += ".so";
  return path;
}

} // namespace

const char *moduleDirectory(const void *anchor, char *buffer, size_t size) {
  // Made absolute, so that a later chdir does not change what the directory names.
  std::string file = fileHolding(anchor);
  if (const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(file.c_str(), nullptr),
                                                                 &std::free);
      resolved)
    file = resolved.get();
  const size_t slash = file.rfind('/');
  if (slash == std::string::npos)
    return ".";
  const std::string directory = slash == 0 ? std::string("/") : file.substr(0, slash);
  if (buffer == nullptr || directory.size() >= size)
    return ".";
  std::memcpy(buffer, directory.c_str(), directory.size() + 1);
  return buffer;
}

HMODULE LoadLibraryA(const char *name) {
  if (name == nullptr || name[0] == '\0') {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const std::string path = libraryPath(name);
  LibraryHandle library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library) {
    SetLastError(access(path.c_str(), F_OK) == 0 ? kErrorNotLoadableModule : kErrorModuleNotFound);
    return nullptr;
  }
  // The loader's entry for the library points at its dynamic section, inside its image.
  link_map *map = nullptr;
  const void *anchor = dlinfo(library.get(), RTLD_DI_LINKMAP, &map) == 0 ? map->l_ld : nullptr;
  const auto *resources =
      static_cast<const ResourceTable *>(dlsym(library.get(), TUK_RESOURCE_SYMBOL));
  return new CModule{resources, anchor, library.release()}; // owns the handle until FreeLibrary
}

BOOL FreeLibrary(HMODULE module) {
  if (module == nullptr || module->dlHandle == nullptr) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  // A lookup must never reach a released module: the current state goes back to its own.
  AFX_MODULE_STATE *state = AfxGetModuleState();
  if (state->m_hCurrentResourceHandle == module)
    state->m_hCurrentResourceHandle = state->m_hCurrentInstanceHandle;
  const std::unique_ptr<CModule> owned(module);
  const LibraryHandle library(owned->dlHandle);
  return TRUE;
}
