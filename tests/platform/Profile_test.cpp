// GetPrivateProfileStringA: one value of an INI file, or the default. (A pipe or a folder in
// its place: hostile/Pathological.)
#include "platform/Profile.h"
#include "tests/support/TestFiles.h"
#include <gtest/gtest.h>

namespace {
class ProfileTest : public ::testing::Test {
protected:
  // The value and the count, as one string "count:value".
  std::string read(const char *section, const char *key, DWORD size = 64,
                   const char *defaultValue = "dflt") {
    char buffer[64];
    const DWORD count =
        GetPrivateProfileStringA(section, key, defaultValue, buffer, size, ini.c_str());
    return std::to_string(count) + ":" + buffer;
  }
  TempDir dir;
  const std::string ini = dir.file("eudora.ini");
};

TEST_F(ProfileTest, FindsTheValueAndCopiesAtMostSizeLessOne) {
  writeFile(ini, "Top=1\r\n"
                 "[Other]\r\n"
                 "Dir=wrong\r\n"
                 "[ settings ]\r\n"
                 "; Dir=comment\r\n"
                 "  autoreceiveattachmentsdirectory  =  \"C:\\Mail\\Attach\"  \r\n"
                 "Single='quoted'\n"
                 "Odd=\"half\n"
                 "Empty=\n"
                 "[Settings]\n"
                 "Later=in a second section of the name\n");
  EXPECT_EQ("14:C:\\Mail\\Attach", read("SETTINGS", "AutoReceiveAttachmentsDirectory"));
  EXPECT_EQ("6:quoted", read("Settings", "single"));
  EXPECT_EQ("5:\"half", read("Settings", "Odd"));
  EXPECT_EQ("0:", read("Settings", "Empty"));
  EXPECT_EQ("4:dflt", read("Settings", "Dir"));   // only in another section
  EXPECT_EQ("4:dflt", read("Settings", "Later")); // the first section of a name counts
  EXPECT_EQ("4:dflt", read("Missing", "Dir"));
  EXPECT_EQ("0:", read("Missing", "Dir", 64, nullptr));
  // At most size - 1 bytes are copied, and counted; the default is cut the same way.
  writeFile(ini, "[S]\nK=abcdef\n");
  EXPECT_EQ("6:abcdef", read("S", "K", 7));
  EXPECT_EQ("5:abcde", read("S", "K", 6));
  EXPECT_EQ("0:", read("S", "K", 1));
  EXPECT_EQ("3:dfl", read("S", "Missing", 4)); // the default is cut the same way
  char untouched[4] = "xyz";
  EXPECT_EQ(0u, GetPrivateProfileStringA("S", "K", "d", untouched, 0, ini.c_str()));
  EXPECT_STREQ("xyz", untouched);
}

} // namespace
