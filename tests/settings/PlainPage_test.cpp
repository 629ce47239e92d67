// The plain page of template 129 that every page builds on: hidden OK and Cancel that Enter
// and Esc can't reach, and nothing to check.
#include "settings/PropPage.h"
#include "tests/settings/SettingsFixture.h"

namespace {

class PlainPageTest : public SettingsTest {
protected:
  void SetUp() override {
    start(allClients()[0].key); // the agent's module state, for its templates and strings
    ASSERT_TRUE(page.Create(page.templateId, CWnd::FromHandle(reinterpret_cast<HWND>(frame))));
    window = reinterpret_cast<TukWindow>(page.m_hWnd);
    tukWindowShow(window, 1);
  }

  CPropPage page{nullptr};
  TukWindow window = 0;
};

TEST_F(PlainPageTest, EnterAndEscReachNeitherHiddenButtonAndEndNothing) {
  EXPECT_EQ(129u, page.templateId);
  EXPECT_EQ(0, page.attach);
  for (const int id : {IDOK, IDCANCEL}) {
    EXPECT_EQ(0, windowInfo(control(window, id)).visible);
    EXPECT_EQ(-1, tukWindowClick(control(window, id)));
  }
  EXPECT_EQ(0, tukWindowPressKey(window, TUK_KEY_ENTER));
  EXPECT_EQ(0, tukWindowPressKey(window, TUK_KEY_ESCAPE));
  EXPECT_EQ(0, tukWindowPressKey(window, TUK_KEY_F1)); // no help of its own
  EXPECT_EQ(1, windowInfo(window).visible);
  EXPECT_EQ(1, page.Validate(0));
  EXPECT_TRUE(user.events.empty());
}

} // namespace
