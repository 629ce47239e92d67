// The date reader over the texts a Date header holds.
#include "store/MAILDATE.h"

#include "tests/support/AgentSession.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

struct DateCase {
  const char *text;
  bool valid;
  int hour = 0, minute = 0, second = 0, day = 0, month = 0, year = 0;
};

// A failure names the text; the test's name, its place in the list.
void PrintTo(const DateCase &c, std::ostream *out) { *out << '"' << c.text << '"'; }

// Month names come from the string table of a live agent.
class MailDateTest : public ::testing::TestWithParam<DateCase> {
protected:
  AgentSession session;
};

TEST_P(MailDateTest, ReadsTheSixNumbersOrNone) {
  const DateCase &c = GetParam();
  const CMailDate date{CString(c.text)};
  if (!c.valid) {
    EXPECT_EQ(-1, date.getDay());
    EXPECT_EQ(-1, date.getHour());
    EXPECT_EQ(-1, date.getYear());
    return;
  }
  EXPECT_EQ(c.hour, date.getHour());
  EXPECT_EQ(c.minute, date.getMinute());
  EXPECT_EQ(c.second, date.getSecond());
  EXPECT_EQ(c.day, date.getDay());
  EXPECT_EQ(c.month, date.getMonth());
  EXPECT_EQ(c.year, date.getYear());
}

INSTANTIATE_TEST_SUITE_P(
    Examples, MailDateTest,
    ::testing::Values(
        DateCase{"Thu, 15 Jan 1998 10:30:45 -0500", true, 10, 30, 45, 15, 0, 98},
        DateCase{"Fri Jan 16 08:15:02 1998", true, 8, 15, 2, 16, 0, 98},
        DateCase{"Wed, 7 May 1997 11:02:33 GMT", true, 11, 2, 33, 7, 4, 97},
        DateCase{"Sat, 07 Feb 98 18:44:00 PST", true, 18, 44, 0, 7, 1, 98},
        DateCase{"12 Jan 98 23:59", true, 23, 59, 0, 12, 0, 98},
        DateCase{"15 Jan 2000 10:5:30", true, 10, 5, 0, 15, 0, 100},
        DateCase{"1998 Jan 12 10:30:00", true, 10, 30, 0, 12, 0, 98},
        DateCase{"15 Dec 1998 10:00:00 (Mar)", true, 10, 0, 0, 15, 2, 98},
        DateCase{"15 Jan 00 10:00:00", true, 10, 0, 0, 15, 0, 0},
        DateCase{"5 Jan 98 10:00:00", false},
        DateCase{"10:30:00 1 Jan 1998", false},
        DateCase{"1 Jan 1998  10:30:00", false},
        DateCase{"Jan 12, 1998 10:30:00", false},
        DateCase{"Mon, 12 jan 1998 10:00:00", false},
        DateCase{"", false},
        DateCase{"    ", false},
        // Only nine tokens are entered, but the time may stand behind the ninth.
        DateCase{"a b c d e f g h 12 Jan 1998 10:11:12", false},
        DateCase{"xxx xxx xxx xxx xxx xxx 15 Jan 1998 10:20:30 y y y y y y y", true, 10, 20, 30,
                 15, 0, 98},
        DateCase{"xxx xxx xxx xxx xxx xxx xxx 15 Jan 10:20:30 1998", false},
        // The day token is not looked at, only its length.
        DateCase{"a Jan 1998 10:11:12", true, 10, 11, 12, 0, 0, 98},
        // atoi of huge numbers is clamped, never undefined.
        DateCase{"Mon 12 Jan 1998 99999999999999:00", true, 2147483647, 0, 0, 12, 0, 98}),
    [](const ::testing::TestParamInfo<DateCase> &info) {
      return "text" + std::to_string(info.index);
    });

} // namespace
