// Local calendar time to seconds, without asking the file system each time.
#include "store/LocalTime.h"

#include "platform/TimeZone.h"

#include <climits>
#include <cstdint>
#include <string>

namespace {

constexpr time_t kDay = time_t{24} * 60 * 60;

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

// The zone's offset at the start of a day, as each examination of the four days around it
// asks: kept, so that a store whose dates fill most days asks the library once a day.
struct DayStart {
  int32_t day;
  int32_t offset; // seconds east of UTC, or kUnsteady when the library gave none
  uint32_t zone;  // as in DayOffset
};
DayStart starts[kDaysKept];

// The zone's offset from UTC at the start of `day`, in seconds east; kUnsteady when it can't
// be had.
int32_t offsetAtStartOf(int32_t day) {
  DayStart &entry = starts[static_cast<uint32_t>(day) % kDaysKept];
  if (entry.zone != currentZone || entry.day != day) {
    const auto when = static_cast<time_t>(int64_t{day} * kDay);
    long offset = 0;
    entry = {day, kUnsteady, currentZone};
    if (zoneOffsetAt(when, offset) && offset > kUnsteady && offset <= INT32_MAX)
      entry.offset = static_cast<int32_t>(offset);
  }
  return entry.offset;
}

DayOffset examine(int32_t day) {
  DayOffset result{day, kUnsteady, currentZone};
  const int32_t first = offsetAtStartOf(day - 1);
  for (int32_t next = day; next <= day + 2 && first != kUnsteady; ++next)
    if (offsetAtStartOf(next) != first)
      return result;
  result.offset = first;
  return result;
}

time_t slowPath(const struct tm &fields) {
  return localFieldsToSeconds(fields);
}

int64_t dayOf(time_t seconds) {
  const int64_t day = seconds / kDay;
  return seconds % kDay < 0 ? day - 1 : day;
}

bool fitsDayNumber(int64_t day) {
  return day > INT32_MIN && day < INT32_MAX - 2;
}

// Days from 1 January 1970 to the given day of the proleptic Gregorian calendar (month 1 to
// 12, any day).
int64_t daysFromCivil(int64_t year, int64_t month, int64_t day) {
  year -= month <= 2 ? 1 : 0;
  const int64_t era = (year >= 0 ? year : year - 399) / 400;
  const int64_t yearOfEra = year - era * 400;
  const int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

// The fields read as UTC, normalised as timegm normalises them (a month out of range moves
// the year, the rest just adds up); false when the result does not fit a time_t.
bool secondsAsUtc(const struct tm &fields, time_t &seconds) {
  int64_t year = int64_t{fields.tm_year} + 1900 + fields.tm_mon / 12;
  int64_t month = fields.tm_mon % 12;
  if (month < 0) {
    month += 12;
    --year;
  }
  const int64_t days = daysFromCivil(year, month + 1, 1) + fields.tm_mday - 1;
  const int64_t total =
      days * kDay + int64_t{fields.tm_hour} * 3600 + int64_t{fields.tm_min} * 60 + fields.tm_sec;
  seconds = static_cast<time_t>(total);
  return static_cast<int64_t>(seconds) == total;
}

// A zone of the "right" kind counts leap seconds in UTC too: its local times are mktime's to
// convert, every one. It is told by timegm, which counts them, disagreeing with the sum above
// on a date after the first leap second.
uint32_t leapCheckedZone = 0;
bool zoneCountsLeapSeconds = false;

bool countsLeapSeconds() {
  if (leapCheckedZone != currentZone) {
    struct tm probe = {};
    probe.tm_year = 120;
    probe.tm_mday = 1;
    time_t sum = 0;
    zoneCountsLeapSeconds = !secondsAsUtc(probe, sum) || utcFieldsToSeconds(probe) != sum;
    leapCheckedZone = currentZone;
  }
  return zoneCountsLeapSeconds;
}

ZoneSource lastSource;
bool sourceKnown = false;

} // namespace

void refreshTimeZone() {
  // The source is looked at before the library reads it: a change between the two is then
  // seen at the next reading, never lost.
  ZoneSource source = ZoneSource::now();
  readTimeZone();
  // The tables stay good while the zone's source is the one they were filled under: an
  // object opened after another costs no lookups of the library again.
  if (sourceKnown && source == lastSource)
    return;
  lastSource = std::move(source);
  sourceKnown = true;
  if (++currentZone == 0) { // after four billion refreshes, the table starts again
    for (DayOffset &entry : days)
      entry.zone = 0;
    for (DayStart &entry : starts)
      entry.zone = 0;
    currentZone = 1;
  }
}

time_t localTimeToSeconds(const struct tm &fields) {
  // The fields read as UTC, normalised as mktime normalises them, without a zone.
  time_t asUtc = 0;
  if (countsLeapSeconds() || !secondsAsUtc(fields, asUtc))
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
