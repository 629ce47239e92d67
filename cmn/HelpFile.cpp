// GetHelpFilePath: the help file is installed beside this library.
#include "cmn/HelpFile.h"

#include "platform/Modules.h"
#include "platform/Paths.h"

#include <string>

namespace {

const char kHelpFileName[] = "tuk_mhmail.help";

std::string helpFilePath() {
  char buffer[4096];
  std::string directory =
      moduleDirectory(reinterpret_cast<const void *>(&GetHelpFilePath), buffer, sizeof buffer);
  if (directory.empty() || directory == ".")
    return kHelpFileName; // relative to the working directory: the best guess left
  if (directory.back() != kPathSeparator)
    directory += kPathSeparator;
  return directory + kHelpFileName;
}

} // namespace

const char *GetHelpFilePath() {
  static const std::string path = helpFilePath();
  return path.c_str();
}
