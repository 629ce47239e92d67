// Local calendar time to seconds, without asking the file system each time.
#include "store/LocalTime.h"

#include <climits>
#include <cstdint>

namespace {

constexpr time_t kDay = 24 * 60 * 60;

// What is known of the zone's offset around one day: steady when it is the same at the
// starts of the day before, the day itself, the day after and the one after that. Every
// local time of the day then names exactly one moment, for no zone's offset ever changed
// twice within a day. The agent's entries run one at a time, so one table serves them.
struct DayOffset {
  int32_t day;
  int32_t offset; // seconds east of UTC, or kUnsteady
  uint32_t zone;  // the refresh it was examined after; 0: not examined
};

constexpr int32_t kUnsteady = INT32_MIN;
// 45 years of days, by day number: a store's dates rarely spread wider.
constexpr uint32_t kDaysKept = 16384;
DayOffset days[kDaysKept];
uint32_t currentZone = 1;

// The zone's offset from UTC at `when`, in seconds east; false when it can't be had.
bool offsetAt(time_t when, long &offset) {
  struct tm local;
  if (localtime_r(&when, &local) == nullptr)
    return false;
  offset = local.tm_gmtoff;
  return true;
}

DayOffset examine(int32_t day) {
  DayOffset result{day, kUnsteady, currentZone};
  long first = 0, offset = 0;
  if (!offsetAt(static_cast<time_t>((int64_t{day} - 1) * kDay), first))
    return result;
  for (int64_t next = day; next <= int64_t{day} + 2; ++next)
    if (!offsetAt(static_cast<time_t>(next * kDay), offset) || offset != first)
      return result;
  result.offset = static_cast<int32_t>(first);
  return result;
}

time_t slowPath(const struct tm &fields) {
  struct tm copy = fields;
  copy.tm_isdst = -1;
  return std::mktime(&copy);
}

int64_t dayOf(time_t seconds) {
  const int64_t day = seconds / kDay;
  return seconds % kDay < 0 ? day - 1 : day;
}

bool fitsDayNumber(int64_t day) {
  return day > INT32_MIN && day < INT32_MAX - 2;
}

} // namespace

void refreshTimeZone() {
  tzset();
  if (++currentZone == 0) { // after four billion refreshes, the table starts again
    for (DayOffset &entry : days)
      entry.zone = 0;
    currentZone = 1;
  }
}

time_t localTimeToSeconds(const struct tm &fields) {
  // The fields read as UTC: timegm normalises them as mktime does, without a zone.
  struct tm utc = fields;
  utc.tm_isdst = 0;
  const time_t asUtc = timegm(&utc);
  if (asUtc == -1)
    return slowPath(fields);
  // Where the offset is steady around the day, the local time is the moment the fields less
  // that offset. Everything else (a gap or an overlap of daylight saving, a zone that changed
  // its offset) is mktime's to decide.
  const int64_t day = dayOf(asUtc);
  if (!fitsDayNumber(day))
    return slowPath(fields);
  DayOffset &entry = days[static_cast<uint32_t>(day) % kDaysKept];
  if (entry.zone != currentZone || entry.day != day)
    entry = examine(static_cast<int32_t>(day));
  if (entry.offset == kUnsteady)
    return slowPath(fields);
  return asUtc - entry.offset;
}
