// Local calendar time to seconds, without asking the file system each time.
#include "store/LocalTime.h"

namespace {

constexpr time_t kDay = 24 * 60 * 60;

// The zone's offset from UTC at `when`, in seconds east; false when it can't be had.
bool offsetAt(time_t when, long &offset) {
  struct tm local;
  if (localtime_r(&when, &local) == nullptr)
    return false;
  offset = local.tm_gmtoff;
  return true;
}

time_t slowPath(const struct tm &fields) {
  struct tm copy = fields;
  copy.tm_isdst = -1;
  return std::mktime(&copy);
}

} // namespace

void refreshTimeZone() {
  tzset();
}

time_t localTimeToSeconds(const struct tm &fields) {
  // The fields read as UTC: timegm normalises them as mktime does, without a zone.
  struct tm utc = fields;
  utc.tm_isdst = 0;
  const time_t asUtc = timegm(&utc);
  if (asUtc == -1)
    return slowPath(fields);
  // Where the offset is the same a day before and a day after, the local time names exactly
  // one moment: the fields less that offset. Everything else (a gap or an overlap of daylight
  // saving, a zone that changed its offset) is mktime's to decide.
  long before = 0, after = 0, at = 0;
  if (!offsetAt(asUtc - kDay, before) || !offsetAt(asUtc + kDay, after) || before != after)
    return slowPath(fields);
  const time_t moment = asUtc - before;
  if (!offsetAt(moment, at) || at != before)
    return slowPath(fields);
  return moment;
}
