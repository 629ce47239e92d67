// The date reader over the texts a Date header holds.
#include "store/MAILDATE.h"
#include "tests/support/AgentSession.h"
#include <array>
#include <gtest/gtest.h>
#include <tuple>

namespace {
TEST(MailDateTest, ReadsTheSixNumbersOrNone) {
  AgentSession session; // month names come from the string table of a live agent
  // Each text, whether it is a date, and its hour, minute, second, day, month and year.
  const std::tuple<const char *, bool, std::array<int, 6>> cases[] = {
      {"Thu, 15 Jan 1998 10:30:45 -0500", true, {10, 30, 45, 15, 0, 98}},
      {"Fri Jan 16 08:15:02 1998", true, {8, 15, 2, 16, 0, 98}},
      {"Wed, 7 May 1997 11:02:33 GMT", true, {11, 2, 33, 7, 4, 97}},
      {"Sat, 07 Feb 98 18:44:00 PST", true, {18, 44, 0, 7, 1, 98}},
      {"12 Jan 98 23:59", true, {23, 59, 0, 12, 0, 98}},
      {"15 Jan 2000 10:5:30", true, {10, 5, 0, 15, 0, 100}},
      {"1998 Jan 12 10:30:00", true, {10, 30, 0, 12, 0, 98}},
      {"15 Dec 1998 10:00:00 (Mar)", true, {10, 0, 0, 15, 2, 98}},
      {"15 Jan 00 10:00:00", true, {10, 0, 0, 15, 0, 0}},
      {"5 Jan 98 10:00:00", false, {}},
      {"10:30:00 1 Jan 1998", false, {}},
      {"1 Jan 1998  10:30:00", false, {}},
      {"Jan 12, 1998 10:30:00", false, {}},
      {"Mon, 12 jan 1998 10:00:00", false, {}},
      {"", false, {}},
      {"    ", false, {}},
      // Only nine tokens are entered, but the time may stand behind the ninth.
      {"a b c d e f g h 12 Jan 1998 10:11:12", false, {}},
      {"xxx xxx xxx xxx xxx xxx 15 Jan 1998 10:20:30 y y y y y y y", true, {10, 20, 30, 15, 0, 98}},
      {"xxx xxx xxx xxx xxx xxx xxx 15 Jan 10:20:30 1998", false, {}},
      // The day token is not looked at, only its length.
      {"a Jan 1998 10:11:12", true, {10, 11, 12, 0, 0, 98}},
      // atoi of huge numbers is clamped, never undefined.
      {"Mon 12 Jan 1998 99999999999999:00", true, {2147483647, 0, 0, 12, 0, 98}},
  };
  for (const auto &[text, valid, expected] : cases) {
    const CMailDate date{CString(text)};
    const std::array<int, 6> fields = {date.getHour(), date.getMinute(), date.getSecond(),
                                       date.getDay(),  date.getMonth(),  date.getYear()};
    const std::array<int, 6> none = {-1, -1, -1, -1, -1, -1};
    EXPECT_EQ(valid ? expected : none, fields) << '"' << text << '"';
  }
}
} // namespace
