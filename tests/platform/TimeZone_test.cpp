// The C library's zone as the agent's local times see it: offsets, both conversions, and the
// source that tells a change of zone.
#include "platform/TimeZone.h"
#include "tests/support/ScopedEnvironment.h"

#include <gtest/gtest.h>

namespace {
TEST(TimeZoneTest, OffsetsAndConversionsFollowTheZoneRead) {
  struct tm fields = {};
  fields.tm_year = 98;
  fields.tm_mon = 0;
  fields.tm_mday = 15;
  fields.tm_hour = 10;
  long offset = 1;
  const struct {
    const char *zone;
    long offset;
  } zones[] = {{"UTC0", 0}, {"EST5EDT,M3.2.0,M11.1.0", -5 * 3600}};
  for (const auto &z : zones) {
    const ScopedEnvironment zone("TZ", z.zone, readTimeZone);
    EXPECT_TRUE(zoneOffsetAt(884858400, offset));
    EXPECT_EQ(z.offset, offset);
    EXPECT_EQ(884858400 - z.offset, localFieldsToSeconds(fields));
    EXPECT_EQ(884858400, utcFieldsToSeconds(fields)); // whatever the zone
  }
}

TEST(TimeZoneTest, TheSourceTellsAChangeOfTz) {
  const ScopedEnvironment zone("TZ", "UTC0", readTimeZone);
  const ZoneSource utc = ZoneSource::now();
  EXPECT_TRUE(utc == ZoneSource::now());
  {
    const ScopedEnvironment other("TZ", "EST5", readTimeZone);
    EXPECT_FALSE(utc == ZoneSource::now());
  }
  const ScopedEnvironment none("TZ", std::nullopt, readTimeZone);
  EXPECT_FALSE(ZoneSource::now().set);
}
} // namespace
