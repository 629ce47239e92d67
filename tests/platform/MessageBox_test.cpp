// MessageBoxA: the process-wide user answers; without one, or with an answer the box doesn't
// offer, Cancel where the box has it and OK otherwise.
#include "platform/Window.h"
#include "tests/platform/ScriptedUser.h"
#include <gtest/gtest.h>

namespace {
TEST(MessageBoxTest, TheUserSeesTheBoxAndOnlyItsButtonsCount) {
  const std::pair<UINT, int> nobody[] = {{MB_OK | MB_ICONEXCLAMATION, IDOK},
                                         {MB_RETRYCANCEL | MB_ICONQUESTION, IDCANCEL},
                                         {MB_YESNOCANCEL, IDCANCEL},
                                         {MB_YESNO, IDOK}};
  for (const auto &[type, answer] : nobody)
    EXPECT_EQ(answer, MessageBoxA(nullptr, "text", "caption", type)) << type;
  ScriptedUser user;
  const TukWindow frame = tukFrameCreate("Owner", 10, 10);
  user.boxAnswers = {IDRETRY, IDYES, 0, IDOK};
  EXPECT_EQ(IDRETRY, MessageBoxA(reinterpret_cast<HWND>(frame), "Again?", "Note", 0x25));
  EXPECT_EQ(IDCANCEL, MessageBoxA(nullptr, "x", nullptr, MB_RETRYCANCEL)); // Yes isn't there
  EXPECT_EQ(IDOK, MessageBoxA(nullptr, nullptr, "c", MB_OK));              // no answer
  EXPECT_EQ(IDOK, MessageBoxA(reinterpret_cast<HWND>(frame + 999), "y", "c", MB_OK));
  // A box without a caption says "Error"; one whose owner is no window has none.
  const int32_t box = TUK_USER_MESSAGE_BOX;
  EXPECT_EQ((std::vector<ScriptedUser::Event>{{box, frame, "Again?", "Note", 0x25},
                                              {box, 0, "x", "Error", MB_RETRYCANCEL},
                                              {box, 0, "", "c", MB_OK},
                                              {box, 0, "y", "c", MB_OK}}),
            user.events);
  tukFrameDestroy(frame);
}
} // namespace
