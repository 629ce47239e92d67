// The headless window system: dialogs made from templates, messages through message maps,
// what a person does through the C API, and the lives of windows and their objects.
#include "platform/Window.h"
#include "tests/platform/ScriptedUser.h"
#include "tests/platform/TestDialogs.h"

#include <gtest/gtest.h>
#include <memory>

namespace {
bool sameRect(const TukRect &rect, int left, int top, int right, int bottom) {
  return rect.left == left && rect.top == top && rect.right == right && rect.bottom == bottom;
}

class WindowsTest : public ::testing::Test {
protected:
  void SetUp() override {
    frame = tukFrameCreate("Host", 400, 300);
    ASSERT_NE(0u, frame);
  }
  void TearDown() override { tukFrameDestroy(frame); }
  // The test dialog as a page of the frame, shown.
  std::unique_ptr<RecordingDialog> openPage() {
    auto page = std::make_unique<RecordingDialog>();
    EXPECT_TRUE(page->Create(kChildTemplate, CWnd::FromHandle(reinterpret_cast<HWND>(frame))));
    tukWindowShow(handle(*page), 1);
    return page;
  }
  static TukWindow handle(const CWnd &window) { return reinterpret_cast<TukWindow>(window.m_hWnd); }

  TestModuleScope module;
  TukWindow frame = 0;
};

TEST_F(WindowsTest, ATemplateMakesAHiddenPageWithItsControlsInPixels) {
  RecordingDialog page;
  ASSERT_TRUE(page.Create(kChildTemplate, CWnd::FromHandle(reinterpret_cast<HWND>(frame))));
  const TukWindowInfo dialog = windowInfo(handle(page));
  EXPECT_STREQ("dialog", dialog.windowClass);
  EXPECT_EQ(frame, dialog.parent);
  EXPECT_EQ(0, dialog.visible); // no template of a page is visible; the host shows it
  EXPECT_EQ(0x40000040u, dialog.style);
  // The frame's client area starts at (4, 22); the template's (4, 8, 200, 100) dialog units
  // are (6, 13, 300, 163) pixels with base units of 6 by 13.
  EXPECT_TRUE(sameRect(dialog.rect, 10, 35, 310, 198));

  const std::vector<TukWindow> controls = childWindows(handle(page));
  ASSERT_EQ(5u, controls.size());
  const TukWindowInfo edit = windowInfo(controls[0]);
  EXPECT_EQ(kEditId, edit.id);
  EXPECT_STREQ("edit", edit.windowClass);
  EXPECT_TRUE(sameRect(edit.rect, 25, 68, 145, 94));
  EXPECT_STREQ("button", windowInfo(controls[1]).windowClass);
  EXPECT_STREQ("checkbox", windowInfo(controls[2]).windowClass);
  EXPECT_EQ(1, windowInfo(controls[2]).checked); // from the member, by the data exchange
  EXPECT_EQ(-1, windowInfo(controls[3]).id);
  EXPECT_EQ("Label", windowText(controls[3]));
  EXPECT_EQ(0u, windowInfo(controls[4]).style & WS_VISIBLE);
  EXPECT_EQ(-1, windowInfo(controls[4]).checked);
  // The first size message comes before the controls and WM_INITDIALOG; then the focus goes
  // to the first control with a tab stop.
  EXPECT_EQ((std::vector<std::string>{"size 0 300x163", "init with 1 edit"}), page.log);
  EXPECT_EQ(controls[0], tukWindowFocused());
  EXPECT_EQ(page.edit.m_hWnd, reinterpret_cast<HWND>(controls[0]));
}

TEST_F(WindowsTest, ClicksAndKeysReachTheMapOnlyOnWindowsAPersonCanReach) {
  std::unique_ptr<RecordingDialog> page = openPage();
  const TukWindow go = tukWindowFindChild(handle(*page), kGoId);
  const TukWindow box = tukWindowFindChild(handle(*page), kCheckId);
  page->log.clear();

  EXPECT_EQ(0, tukWindowClick(go));
  EXPECT_EQ(go, tukWindowFocused());
  EXPECT_EQ(0, tukWindowClick(box)); // an automatic check box toggles
  EXPECT_EQ(0, windowInfo(box).checked);
  EXPECT_EQ(0, tukWindowPressKey(go, TUK_KEY_F1));
  EXPECT_EQ(0, tukWindowPressKey(go, TUK_KEY_ENTER));
  EXPECT_EQ((std::vector<std::string>{"go", "help 11", "ok"}), page->log);
  EXPECT_EQ(0, page->checked); // CDialog's OnOK read the box back, then hid the dialog
  EXPECT_EQ(0, windowInfo(handle(*page)).visible);
  tukWindowShow(handle(*page), 1);

  page->log.clear();
  EXPECT_EQ(-1, tukWindowClick(tukWindowFindChild(handle(*page), IDOK)));    // hidden
  EXPECT_EQ(-1, tukWindowClick(tukWindowFindChild(handle(*page), kEditId))); // no button
  EXPECT_EQ(-1, tukWindowPressKey(go, 99));
  tukWindowShow(handle(*page), 0);
  EXPECT_EQ(-1, tukWindowClick(go));
  EXPECT_EQ(-1, tukWindowPressKey(go, TUK_KEY_ESCAPE));
  EXPECT_TRUE(page->log.empty());
  // Esc in a shown modeless dialog: CDialog's OnCancel hides it.
  tukWindowShow(handle(*page), 1);
  EXPECT_EQ(0, tukWindowPressKey(go, TUK_KEY_ESCAPE));
  EXPECT_EQ((std::vector<std::string>{"cancel"}), page->log);
  EXPECT_EQ(0, windowInfo(handle(*page)).visible);
}

TEST_F(WindowsTest, HelpWithoutAHandlerGoesUpAndStopsAtTheTop) {
  CDialog plain(kChildTemplate);
  ASSERT_TRUE(plain.Create(kChildTemplate, CWnd::FromHandle(reinterpret_cast<HWND>(frame))));
  tukWindowShow(reinterpret_cast<TukWindow>(plain.m_hWnd), 1);
  EXPECT_EQ(
      0, tukWindowPressKey(tukWindowFindChild(reinterpret_cast<TukWindow>(plain.m_hWnd), kEditId),
                           TUK_KEY_F1));
}

TEST_F(WindowsTest, WindowsAndObjectsLetGoOfEachOther) {
  // The host destroys its frame under a page: the page object loses its window, and every
  // call on it then does nothing.
  std::unique_ptr<RecordingDialog> page = openPage();
  const TukWindow pageWindow = handle(*page);
  const TukWindow edit = tukWindowFindChild(pageWindow, kEditId);
  EXPECT_EQ(0, tukFrameDestroy(frame));
  frame = 0;
  EXPECT_EQ(nullptr, page->m_hWnd);
  EXPECT_EQ(nullptr, page->edit.m_hWnd);
  EXPECT_EQ(-1, tukWindowGetInfo(pageWindow, nullptr));
  EXPECT_EQ(-1, tukWindowGetText(edit, nullptr, 0));
  CString text("kept");
  page->edit.GetWindowTextA(text);
  EXPECT_STREQ("kept", text.GetString());
  page->edit.SetWindowTextA("nowhere");
  page->UpdateData(TRUE);
  page.reset();
  // An object that made its window destroys it, children too; a bound control only lets go.
  frame = tukFrameCreate("Host", 400, 300);
  page = openPage();
  const TukWindow secondPage = handle(*page);
  {
    CEdit borrowed;
    ASSERT_TRUE(borrowed.SubclassDlgItem(kGoId, page.get()));
    EXPECT_FALSE(CEdit().SubclassDlgItem(kGoId, page.get())); // taken
  }
  EXPECT_NE(0u, tukWindowFindChild(secondPage, kGoId));
  const TukWindow secondEdit = tukWindowFindChild(secondPage, kEditId);
  page.reset();
  EXPECT_EQ(-1, tukWindowGetInfo(secondPage, nullptr));
  EXPECT_EQ(-1, tukWindowGetText(secondEdit, nullptr, 0));
  EXPECT_TRUE(childWindows(frame).empty());
}
} // namespace
