// getPathFromIdList: the three forms in which a shell folder may name a chosen folder, and
// the ways that leave the path alone.
#include "platform/Shell.h"
#include "settings/PropPage.h"
#include "tests/support/AgentSession.h"
#include <cstring>
#include <gtest/gtest.h>

namespace {
// A folder that names every list in the form the test asks for.
class ScriptedFolder final : public IShellFolder {
public:
  HRESULT GetDisplayNameOf(LPCITEMIDLIST, DWORD flags, STRRET *name) override {
    lastFlags = flags;
    if (result != S_OK)
      return result;
    name->uType = form;
    if (form == STRRET_WSTR) {
      auto *wide = static_cast<WCHAR *>(CoTaskMemAlloc(sizeof u"/home/\u00e9"));
      std::memcpy(wide, u"/home/\u00e9", sizeof u"/home/\u00e9");
      name->pOleStr = wide; // the caller frees it: a leak shows under the sanitizer
    } else if (form == STRRET_OFFSET) {
      name->uOffset = 2;
    } else if (form == STRRET_CSTR) {
      std::memset(name->cStr, 'c', sizeof name->cStr); // filled to the end, no zero
    }
    return S_OK;
  }
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }
  UINT form = STRRET_WSTR;
  HRESULT result = S_OK;
  DWORD lastFlags = 0;
};

TEST(PathFromIdListTest, EachFormGivesThePathAndEveryFailureLeavesItAlone) {
  AgentSession session; // the agent's module state, as inside an entry
  CPropPage page{nullptr};
  ScriptedFolder folder;
  const unsigned char bytes[12] = {10, 0, '/', 'o', 'f', 'f', 's', 'e', 't', 0, 0, 0};
  const auto list = reinterpret_cast<LPCITEMIDLIST>(bytes);
  const auto pathIn = [&](IShellFolder *from, UINT form, int expectedResult) {
    folder.form = form;
    CString path("untouched");
    EXPECT_EQ(expectedResult, page.getPathFromIdList(from, list, SHGDN_FORPARSING, path));
    return std::string(path.GetString());
  };
  EXPECT_EQ("/home/\xC3\xA9", pathIn(&folder, STRRET_WSTR, 1));
  EXPECT_EQ(static_cast<DWORD>(SHGDN_FORPARSING), folder.lastFlags);
  EXPECT_EQ("/offset", pathIn(&folder, STRRET_OFFSET, 1));
  EXPECT_EQ(std::string(260, 'c'), pathIn(&folder, STRRET_CSTR, 1));
  EXPECT_EQ("untouched", pathIn(&folder, 7, 0));
  EXPECT_EQ("untouched", pathIn(nullptr, STRRET_CSTR, 0));
  folder.result = E_INVALIDARG;
  EXPECT_EQ("untouched", pathIn(&folder, STRRET_CSTR, 0));
}
} // namespace
