// WinHelpA: the topic paired with a control's id, read from the plain-text help file, goes to
// the user as a help event.
#include "platform/Help.h"
#include "tests/platform/ScriptedUser.h"
#include "tests/support/TestFiles.h"
#include <gtest/gtest.h>

namespace {
const char kHelpFile[] = "Preamble, never shown.\n"
                         "@7 Seven\r\n"
                         "\r\n"
                         "First line.\r\n"
                         "@not a topic line\r\n"
                         "\r\n"
                         "@8 Eight\n"
                         "Eight's text.\n"
                         "@7 Seven again\n"
                         "Never shown.\n";

class HelpTest : public ::testing::Test {
protected:
  void SetUp() override { writeFile(helpFile, kHelpFile); }
  void TearDown() override { tukFrameDestroy(frame); }
  BOOL help(const uint32_t *pairs, const char *file) {
    return WinHelpA(reinterpret_cast<HWND>(frame), file, HELP_WM_HELP,
                    reinterpret_cast<ULONG_PTR>(pairs));
  }
  TempDir dir;
  const std::string helpFile = dir.file("help.txt");
  ScriptedUser user;
  TukWindow frame = tukFrameCreate("Window with id 0", 10, 10);
};

TEST_F(HelpTest, ShowsTheTopicOfTheWindowsPairAndNothingWithoutOne) {
  const uint32_t pairs[] = {5, 8, 0, 7, 0, 0}; // the frame's id is 0
  EXPECT_TRUE(help(pairs, helpFile.c_str()));
  EXPECT_EQ((std::vector<ScriptedUser::Event>{
                {TUK_USER_HELP, frame, "First line.\n@not a topic line", "Seven", 7}}),
            user.events);
  // Nothing without a pair, a topic, a file or the right command.
  const uint32_t noPair[] = {5, 8, 0, 0};
  const uint32_t noTopic[] = {0, 99, 0, 0};
  const uint32_t good[] = {0, 8, 0, 0};
  EXPECT_FALSE(help(noPair, helpFile.c_str()));
  EXPECT_FALSE(help(noTopic, helpFile.c_str()));
  EXPECT_FALSE(help(good, dir.file("missing").c_str()));
  EXPECT_FALSE(help(good, nullptr));
  EXPECT_FALSE(WinHelpA(reinterpret_cast<HWND>(frame), helpFile.c_str(), 1,
                        reinterpret_cast<ULONG_PTR>(good)));
  EXPECT_FALSE(
      WinHelpA(nullptr, helpFile.c_str(), HELP_WM_HELP, reinterpret_cast<ULONG_PTR>(good)));
  EXPECT_EQ(1u, user.events.size()); // the one shown above
}

} // namespace
