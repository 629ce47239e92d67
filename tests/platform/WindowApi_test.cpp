// The host's C API: frames, finding and reading windows, and no crash on anything a host
// might pass.
#include "tests/platform/ScriptedUser.h"
#include <gtest/gtest.h>

namespace {
TEST(WindowApiTest, AFrameIsAVisibleTopLevelWindowAndBadHandlesFailQuietly) {
  const TukWindow frame = tukFrameCreate("Settings", 200, 100);
  ASSERT_NE(0u, frame);
  const TukWindowInfo info = windowInfo(frame);
  EXPECT_STREQ("frame", info.windowClass);
  EXPECT_EQ(1, info.visible);
  EXPECT_EQ(0u, info.parent);
  EXPECT_EQ(200, info.client.right - info.client.left);
  EXPECT_EQ(100, info.client.bottom - info.client.top);
  EXPECT_EQ(frame, childWindows(0).back());
  // Text: the whole length, and at most capacity - 1 bytes copied.
  char buffer[5] = "****";
  EXPECT_EQ(8, tukWindowGetText(frame, buffer, 4));
  EXPECT_STREQ("Set", buffer);
  // The close box destroys a frame.
  EXPECT_EQ(0, tukWindowClose(frame));
  EXPECT_EQ(-1, tukWindowGetInfo(frame, nullptr));
  EXPECT_EQ(-1, tukFrameDestroy(frame));
  // Bad handles and null pointers fail quietly.
  const TukWindow gone = tukFrameCreate("gone", 1, 1);
  tukFrameDestroy(gone);
  for (const TukWindow bad : {TukWindow{0}, gone, ~TukWindow{0}, TukWindow{12345}}) {
    SCOPED_TRACE(bad);
    TukWindowInfo info{};
    EXPECT_EQ(-1, tukWindowGetInfo(bad, &info));
    EXPECT_EQ(-1, tukWindowGetText(bad, nullptr, 10));
    EXPECT_EQ(-1, tukWindowSetText(bad, "x"));
    EXPECT_EQ(-1, tukWindowSetCheck(bad, 1));
    EXPECT_EQ(-1, tukWindowClick(bad));
    EXPECT_EQ(-1, tukWindowShow(bad, 1));
    EXPECT_EQ(-1, tukWindowFocus(bad));
    EXPECT_EQ(-1, tukWindowPlace(bad, 0, 0, 1, 1));
    EXPECT_EQ(-1, tukWindowResize(bad, 1, 1));
    EXPECT_EQ(-1, tukWindowMinimize(bad));
    EXPECT_EQ(-1, tukWindowRestore(bad));
    EXPECT_EQ(-1, tukWindowClose(bad));
    EXPECT_EQ(-1, tukWindowPressKey(bad, TUK_KEY_F1));
    EXPECT_EQ(-1, tukFrameDestroy(bad));
    EXPECT_EQ(0u, tukWindowFindChild(bad, 1));
    EXPECT_TRUE(bad == 0 || tukWindowChildren(bad, nullptr, 0) == -1);
  }
  const TukWindow empty = tukFrameCreate(nullptr, -5, -5);
  EXPECT_EQ(-1, tukWindowGetInfo(empty, nullptr));
  EXPECT_EQ(-1, tukWindowSetCheck(empty, 1)); // no check box
  EXPECT_EQ(-1, tukWindowMinimize(empty));    // no minimise box
  TukWindow one = 0;
  EXPECT_GE(tukWindowChildren(0, &one, 1), 1);
  EXPECT_EQ(0, tukWindowChildren(empty, nullptr, 5));
  EXPECT_EQ(0, tukWindowFocus(empty));
  EXPECT_EQ(empty, tukWindowFocused());
  tukFrameDestroy(empty);
  EXPECT_EQ(0u, tukWindowFocused());
}

} // namespace
