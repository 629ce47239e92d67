// Where the registry file lives: $TUK_REGISTRY, else under the XDG configuration directory.
#include "cmn/Registry.h"

#include <cstdlib>
#include <pwd.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

const char *nonEmptyEnvironment(const char *name) {
  const char *value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

// $HOME, else the home directory of the user's account; empty when neither is known.
std::string homeDirectory() {
  if (const char *home = nonEmptyEnvironment("HOME"))
    return home;
  long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<size_t>(size) : 16384);
  struct passwd account;
  struct passwd *found = nullptr;
  if (::getpwuid_r(::getuid(), &account, buffer.data(), buffer.size(), &found) != 0 ||
      found == nullptr || found->pw_dir == nullptr)
    return std::string();
  return found->pw_dir;
}

} // namespace

CString registryFilePath() {
  if (const char *explicitPath = nonEmptyEnvironment("TUK_REGISTRY"))
    return explicitPath;
  // The XDG base directory rules ignore a relative $XDG_CONFIG_HOME.
  const char *configHome = nonEmptyEnvironment("XDG_CONFIG_HOME");
  if (configHome != nullptr && configHome[0] == '/')
    return CString(configHome) + "/tuk/registry.reg";
  const std::string home = homeDirectory();
  if (home.empty())
    return CString();
  return CString(home.c_str()) + "/.config/tuk/registry.reg";
}
