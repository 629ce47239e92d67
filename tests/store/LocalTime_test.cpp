// The conversion of a message's local date to seconds gives what mktime gives, in zones with
// and without daylight saving, across their changes and for fields out of range.
#include "store/LocalTime.h"
#include "tests/support/ScopedEnvironment.h"
#include <gtest/gtest.h>
#include <vector>

namespace {
time_t viaMktime(struct tm fields) {
  fields.tm_isdst = -1;
  return std::mktime(&fields);
}

struct tm fieldsOf(int year, int month, int day, int hour, int minute, int second) {
  struct tm fields = {};
  fields.tm_year = year;
  fields.tm_mon = month;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  return fields;
}

class LocalTimeTest : public ::testing::TestWithParam<const char *> {};

// Every quarter hour of two years holds each zone's changes of offset, gaps and overlaps; and
// a message's fields need not be in range: they are normalised as mktime normalises them.
TEST_P(LocalTimeTest, EqualsMktime) {
  const ScopedEnvironment zone("TZ", GetParam(), refreshTimeZone);
  std::vector<struct tm> cases = {
      fieldsOf(71, 1, 1, 0, 0, 0),      fieldsOf(70, 0, 1, 0, 0, 0),
      fieldsOf(69, 11, 31, 23, 59, 59), fieldsOf(138, 0, 19, 3, 14, 8),
      fieldsOf(138, 0, 19, 3, 14, 7),   fieldsOf(101, 13, 0, 25, 61, 61),
      fieldsOf(99, -1, 32, -1, -1, -1), fieldsOf(0, 0, 1, 0, 0, 0),
      fieldsOf(-1000, 0, 1, 0, 0, 0),   fieldsOf(8099, 11, 31, 0, 0, 0),
      fieldsOf(124, 2, 31, 2, 30, 0),   fieldsOf(124, 9, 27, 2, 30, 0),
  };
  for (int year : {96, 124})
    for (int day = 1; day <= 366; ++day)
      for (int quarter = 0; quarter < 96; ++quarter)
        cases.push_back(fieldsOf(year, 0, day, quarter / 4, 15 * (quarter % 4), 30));
  int differences = 0;
  for (const struct tm &fields : cases)
    if (localTimeToSeconds(fields) != viaMktime(fields) && ++differences <= 3)
      ADD_FAILURE() << 1900 + fields.tm_year << "-" << fields.tm_mon + 1 << "-" << fields.tm_mday
                    << " " << fields.tm_hour << ":" << fields.tm_min << ":" << fields.tm_sec;
  EXPECT_EQ(0, differences);
}

// UTC, whole and half hours of daylight saving on both hemispheres, a zone that moved across
// the date line, one that counts leap seconds, and a rule given in the variable itself.
INSTANTIATE_TEST_SUITE_P(Zones, LocalTimeTest,
                         ::testing::Values("UTC", "Europe/Berlin", "America/New_York",
                                           "Australia/Lord_Howe", "America/Santiago",
                                           "Pacific/Apia", "Asia/Kolkata", "right/Europe/Paris",
                                           "CET-1CEST,M3.5.0,M10.5.0/3"));
} // namespace
