// GetHelpFilePath: the help file beside the built libraries.
#include "cmn/HelpFile.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>

namespace {

std::string realPath(const std::string &path) {
  char resolved[PATH_MAX];
  return ::realpath(path.c_str(), resolved) ? resolved : "<" + path + " unresolved>";
}

TEST(HelpFileTest, NamesTheInstalledHelpFileBesideTheLibrary) {
  const char *path = GetHelpFilePath();
  ASSERT_NE(nullptr, path);
  EXPECT_EQ(path, GetHelpFilePath());  // computed once, same storage
  EXPECT_EQ(realPath(std::string(TUK_BIN_DIR) + "/tuk_mhmail.help"), realPath(path));
  EXPECT_EQ(readFile(std::string(TUK_SOURCE_DIR) + "/resources/tuk_mhmail.help"), readFile(path));
}

}  // namespace
