// The C library's time zone, for the agent's local times: what localtime_r, mktime, timegm and
// tzset do, and ZoneSource, what tells that the zone may have changed (the TZ variable, or
// without it /etc/localtime, which is what tzset reads).
#pragma once

#include <ctime>
#include <string>
#include <sys/types.h>

// The zone's offset from UTC at `when`, in seconds east; false when the library gives none.
bool zoneOffsetAt(time_t when, long &offset);
// The moment of local calendar fields, the library deciding daylight saving (mktime with
// tm_isdst -1); -1 when there is none.
time_t localFieldsToSeconds(struct tm fields);
// The moment of calendar fields read as UTC, as the library counts it (timegm).
time_t utcFieldsToSeconds(struct tm fields);
// Reads the zone again, from TZ or /etc/localtime (tzset).
void readTimeZone();

// Where the zone is read from, as tzset tells a change: the TZ text, and without it the
// identity and time of /etc/localtime (glibc reads the file again only when those changed).
struct ZoneSource {
  bool set = false;
  std::string text;
  dev_t device = 0;
  ino_t inode = 0;
  time_t written = 0;

  static ZoneSource now();
  bool operator==(const ZoneSource &other) const;
};
