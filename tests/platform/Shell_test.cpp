// The folder picker with the desktop folder and allocator behind it, and the icon indices of
// the process-wide image list.
#include "platform/Shell.h"
#include "platform/Unicode.h"
#include "tests/platform/ScriptedUser.h"
#include "tests/support/TestFiles.h"
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <unistd.h>

namespace {
struct ListFreer {
  void operator()(ITEMIDLIST *list) const { CoTaskMemFree(list); }
};
using List = std::unique_ptr<ITEMIDLIST, ListFreer>;

class PickerTest : public ::testing::Test {
protected:
  List pick(char *displayName = nullptr) {
    BROWSEINFOA info{};
    info.lpszTitle = "Pick one";
    info.ulFlags = BIF_RETURNONLYFSDIRS;
    info.pszDisplayName = displayName;
    return List(SHBrowseForFolderA(&info));
  }
  // The parsing name that the desktop gives a list, through whichever form it uses.
  static std::string nameOf(const ITEMIDLIST *list, UINT &form) {
    IShellFolder *desktop = nullptr;
    EXPECT_EQ(S_OK, SHGetDesktopFolder(&desktop));
    STRRET name{};
    if (desktop->GetDisplayNameOf(list, SHGDN_FORPARSING, &name) != S_OK)
      return "<failed>";
    form = name.uType;
    if (form == STRRET_OFFSET)
      return reinterpret_cast<const char *>(list) + name.uOffset;
    const int size = WideCharToMultiByte(CP_ACP, 0, name.pOleStr, -1, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, name.pOleStr, -1, bytes.data(), size, nullptr, nullptr);
    CoTaskMemFree(name.pOleStr);
    bytes.pop_back();
    return bytes;
  }
  TempDir dir;
};

// A name that is UTF-8 text, four-byte characters too, comes back as wide text; bytes that are
// no text (Latin-1, an overlong form, a surrogate, past U+10FFFF, a cut sequence) as they are.
TEST_F(PickerTest, OnlyAnExistingFolderIsChosenAndItsListNamesItsPathByteForByte) {
  EXPECT_FALSE(pick()); // nobody at the screen: cancelled
  ScriptedUser user;
  const std::pair<std::string, UINT> names[] = {
      {"Mail \xC3\xA9t\xC3\xA9 \xF0\x9F\x98\x80", STRRET_WSTR},
      {"Latin1 \xE9", STRRET_OFFSET},
      {"over\xC0\xAF", STRRET_OFFSET},
      {"half\xED\xA0\x80", STRRET_OFFSET},
      {"far\xF4\x90\x80\x80", STRRET_OFFSET},
      {"cut\xE2\x82", STRRET_OFFSET}};
  for (const auto &[name, expected] : names) {
    makeDirs(dir.file(name));
    user.folders = {dir.file(name)};
    char displayName[260] = {};
    const List list = pick(displayName);
    ASSERT_TRUE(list) << name;
    EXPECT_EQ(name, displayName);
    UINT form = 99;
    EXPECT_EQ(dir.file(name), nameOf(list.get(), form));
    EXPECT_EQ(expected, form) << name;
  }
  // It opened at the root, with the caller's title.
  EXPECT_EQ((ScriptedUser::Event{TUK_USER_FOLDER_PICKER, 0, "Pick one", "", BIF_RETURNONLYFSDIRS}),
            user.events[0]);
  // Only an existing directory can be chosen.
  writeFile(dir.file("file"), "x");
  user.folders = {dir.file("file"), dir.file("missing"), ""};
  EXPECT_FALSE(pick());
  EXPECT_FALSE(pick());
  EXPECT_FALSE(pick());
  EXPECT_EQ(std::size(names) + 3, user.count(TUK_USER_FOLDER_PICKER));
}

TEST(IconTest, ARegularFileHasOneStableIndexInBothListsAndOthersHaveNone) {
  TempDir dir;
  writeFile(dir.file("eudora.exe"), "MZ");
  writeFile(dir.file("other.exe"), "MZ");
  ASSERT_EQ(0, symlink("eudora.exe", dir.file("link.exe").c_str()));
  makeDirs(dir.file("folder.exe"));
  const auto index = [](const std::string &path, UINT flags) {
    SHFILEINFOA info{};
    info.iIcon = -7;
    return SHGetFileInfoA(path.c_str(), 0, &info, sizeof info, flags) != 0 ? info.iIcon : -1;
  };
  const int large = index(dir.file("eudora.exe"), SHGFI_SYSICONINDEX);
  EXPECT_GT(large, 0);
  EXPECT_EQ(large, index(dir.file("eudora.exe"), SHGFI_SYSICONINDEX | SHGFI_SMALLICON));
  EXPECT_EQ(large, index(dir.file("link.exe"), SHGFI_SYSICONINDEX));
  EXPECT_EQ(large, index(dir.file("eudora.exe"), SHGFI_SYSICONINDEX));
  const int other = index(dir.file("other.exe"), SHGFI_SYSICONINDEX);
  EXPECT_GT(other, 0);
  EXPECT_NE(large, other);
  EXPECT_EQ(-1, index(dir.file("missing.exe"), SHGFI_SYSICONINDEX));
  EXPECT_EQ(-1, index(dir.file("folder.exe"), SHGFI_SYSICONINDEX));
  EXPECT_EQ(-1, index(dir.file("eudora.exe"), 0x100)); // only the index is served
  failIconLookups(true);
  EXPECT_EQ(large, index(dir.file("eudora.exe"), SHGFI_SYSICONINDEX));
  EXPECT_EQ(-1, index(dir.file("eudora.exe"), SHGFI_SYSICONINDEX | SHGFI_SMALLICON));
  EXPECT_EQ(large, index(dir.file("eudora.exe"), SHGFI_SYSICONINDEX | SHGFI_SMALLICON));
}
} // namespace
