// The C library's zone as the agent's local times see it: offsets, both conversions, and the
// source that tells a change of zone.
#include "platform/TimeZone.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class TimeZoneTest : public ::testing::Test {
protected:
  void SetUp() override {
    const char *tz = std::getenv("TZ");
    saved_ = tz != nullptr;
    if (saved_)
      old_ = tz;
  }
  void TearDown() override {
    if (saved_)
      setenv("TZ", old_.c_str(), 1);
    else
      unsetenv("TZ");
    readTimeZone();
  }
  void useZone(const char *zone) {
    setenv("TZ", zone, 1);
    readTimeZone();
  }

private:
  bool saved_ = false;
  std::string old_;
};

TEST_F(TimeZoneTest, OffsetsAndConversionsFollowTheZoneRead) {
  struct tm fields = {};
  fields.tm_year = 98;
  fields.tm_mon = 0;
  fields.tm_mday = 15;
  fields.tm_hour = 10;
  long offset = 1;
  useZone("UTC0");
  EXPECT_TRUE(zoneOffsetAt(884858400, offset));
  EXPECT_EQ(0, offset);
  EXPECT_EQ(884858400, localFieldsToSeconds(fields));
  useZone("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_TRUE(zoneOffsetAt(884858400, offset));
  EXPECT_EQ(-5 * 3600, offset);
  EXPECT_EQ(884858400 + 5 * 3600, localFieldsToSeconds(fields));
  EXPECT_EQ(884858400, utcFieldsToSeconds(fields)); // whatever the zone
}

TEST_F(TimeZoneTest, TheSourceTellsAChangeOfTz) {
  useZone("UTC0");
  const ZoneSource utc = ZoneSource::now();
  EXPECT_TRUE(utc == ZoneSource::now());
  useZone("EST5");
  EXPECT_FALSE(utc == ZoneSource::now());
  unsetenv("TZ");
  EXPECT_FALSE(ZoneSource::now().set);
}

} // namespace
