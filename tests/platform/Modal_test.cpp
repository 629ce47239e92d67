// Modal dialogs and the process-wide user: DoModal hands the dialog to the person, whose
// Enter is OK and Esc Cancel; nobody at all means Cancel and no window. (Dragging, minimising
// and restoring a dialog's frame: the View Email window in settings/MailViewer.)
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
} // namespace
