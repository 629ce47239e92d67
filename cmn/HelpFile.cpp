// GetHelpFilePath: the help file is installed beside this library.
#include "cmn/HelpFile.h"

#include <cstdlib>
#include <dlfcn.h>
#include <memory>
#include <string>

namespace {

const char kHelpFileName[] = "tuk_mhmail.help";

// The directory of the loaded libtuk_cmn.so, made absolute so that a later chdir does not
// change what the path names; empty when the loader cannot tell.
std::string libraryDirectory() {
  Dl_info info;
  if (::dladdr(reinterpret_cast<void *>(&GetHelpFilePath), &info) == 0 || info.dli_fname == nullptr)
    return std::string();
  const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(info.dli_fname, nullptr),
                                                             &std::free);
  const std::string library = resolved ? resolved.get() : info.dli_fname;
  const size_t slash = library.rfind('/');
  if (slash == std::string::npos)
    return std::string();
  return library.substr(0, slash == 0 ? 1 : slash);
}

std::string helpFilePath() {
  std::string directory = libraryDirectory();
  if (directory.empty())
    return kHelpFileName; // relative to the working directory: the best guess left
  if (directory.back() != '/')
    directory += '/';
  return directory + kHelpFileName;
}

} // namespace

const char *GetHelpFilePath() {
  static const std::string path = helpFilePath();
  return path.c_str();
}
