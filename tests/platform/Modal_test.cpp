// Modal dialogs and the process-wide user: DoModal hands the dialog to the person, who may
// read it, drag its frame, minimise and close it; nobody at all means Cancel and no window.
#include "tests/platform/ScriptedUser.h"
#include "tests/platform/TestDialogs.h"

#include <gtest/gtest.h>

namespace {

class ModalTest : public ::testing::Test {
protected:
  TestModuleScope module;
  RecordingDialog dialog{kPopupTemplate};
};

TEST_F(ModalTest, WithoutAUserNothingIsShownAndTheAnswerIsCancel) {
  const size_t windowsBefore = childWindows(0).size();
  EXPECT_EQ(IDCANCEL, dialog.DoModal());
  EXPECT_TRUE(dialog.log.empty()); // not even made
  EXPECT_EQ(windowsBefore, childWindows(0).size());
}

TEST_F(ModalTest, TheUserGetsTheShownDialogAndItsEndingIsTheResult) {
  ScriptedUser user;
  const struct {
    int32_t key; // 0: the user leaves it open
    INT_PTR result;
    const char *handler;
  } cases[] = {
      {TUK_KEY_ENTER, IDOK, "ok"}, {TUK_KEY_ESCAPE, IDCANCEL, "cancel"}, {0, IDCANCEL, "cancel"}};
  for (const auto &c : cases) {
    SCOPED_TRACE(c.key);
    TukWindow shown = 0;
    user.onModal = [&](TukWindow window) {
      shown = window;
      const TukWindowInfo info = windowInfo(window);
      EXPECT_EQ(1, info.visible);
      EXPECT_EQ(0u, info.parent);
      EXPECT_EQ("Popup", windowText(window));
      if (c.key != 0) {
        EXPECT_EQ(0, tukWindowPressKey(tukWindowFindChild(window, kEditId), c.key));
      }
    };
    dialog.log.clear();
    EXPECT_EQ(c.result, dialog.DoModal());
    EXPECT_EQ(c.handler, dialog.log.back());
    EXPECT_EQ("Popup", user.last(TUK_USER_MODAL_DIALOG)->text);
    EXPECT_EQ(-1, tukWindowGetInfo(shown, nullptr)); // gone when DoModal returns
    EXPECT_EQ(nullptr, dialog.m_hWnd);
  }
}

TEST_F(ModalTest, DraggingTheFrameKeepsToTheLimitsTheWindowReports) {
  ScriptedUser user;
  user.onModal = [&](TukWindow window) {
    const TukRect start = windowInfo(window).rect;
    // The template's 200 by 120 units are a 300 by 195 client area, in a sizing frame of 4
    // and a caption of 18.
    EXPECT_EQ(308, start.right - start.left);
    EXPECT_EQ(221, start.bottom - start.top);
    dialog.log.clear();
    EXPECT_EQ(0, tukWindowResize(window, 500, 400));
    EXPECT_EQ(0, tukWindowResize(window, 10, 10)); // below the window's minimum of 300 by 200
    const TukRect clamped = windowInfo(window).rect;
    EXPECT_EQ(start.left, clamped.left);
    EXPECT_EQ(300, clamped.right - clamped.left);
    EXPECT_EQ(200, clamped.bottom - clamped.top);
    EXPECT_EQ(0, tukWindowResize(window, 5000, 5000)); // the screen is the largest
    EXPECT_EQ((std::vector<std::string>{"size 0 492x374", "size 0 292x174", "size 0 1272x998"}),
              dialog.log);
    EXPECT_EQ(-1, tukWindowResize(tukWindowFindChild(window, kEditId), 50, 50)); // no frame
  };
  dialog.DoModal();
}

TEST_F(ModalTest, MinimisingReportsNoSizeAndRestoringGivesTheOldRectangleBack) {
  ScriptedUser user;
  user.onModal = [&](TukWindow window) {
    const TukRect before = windowInfo(window).rect;
    dialog.log.clear();
    EXPECT_EQ(-1, tukWindowRestore(window)); // not minimised
    EXPECT_EQ(0, tukWindowMinimize(window));
    EXPECT_EQ(1, windowInfo(window).minimized);
    EXPECT_EQ(-1, tukWindowPressKey(window, TUK_KEY_ENTER)); // out of reach
    EXPECT_EQ(-1, tukWindowMinimize(window));
    EXPECT_EQ(0, tukWindowRestore(window));
    const TukRect after = windowInfo(window).rect;
    EXPECT_EQ(before.left, after.left);
    EXPECT_EQ(before.bottom, after.bottom);
    EXPECT_EQ((std::vector<std::string>{"size 1 0x0", "size 0 300x195"}), dialog.log);
    EXPECT_EQ(0, tukWindowClose(window)); // the close box: Cancel
  };
  EXPECT_EQ(IDCANCEL, dialog.DoModal());
  EXPECT_EQ("cancel", dialog.log.back());
}

} // namespace
