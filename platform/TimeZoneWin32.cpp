// The C runtime's time zone on Windows. The runtime reads TZ (or, without it, the system's
// zone) at _tzset; its localtime_s and _mkgmtime stand for localtime_r and timegm.
#include "TimeZone.h"

#include <cstdlib>

bool zoneOffsetAt(time_t when, long &offset) {
  struct tm local;
  if (localtime_s(&local, &when) != 0)
    return false;
  // The runtime has no tm_gmtoff: the offset is the local fields read back as UTC.
  offset = static_cast<long>(_mkgmtime(&local) - when);
  return true;
}

time_t localFieldsToSeconds(struct tm fields) {
  fields.tm_isdst = -1;
  return std::mktime(&fields);
}

time_t utcFieldsToSeconds(struct tm fields) {
  return _mkgmtime(&fields);
}

void readTimeZone() {
  _tzset();
}

// The zone changes with TZ; a change of the system's zone is read at the next start.
ZoneSource ZoneSource::now() {
  ZoneSource source;
  const char *text = std::getenv("TZ");
  source.set = text != nullptr;
  if (source.set)
    source.text = text;
  return source;
}

bool ZoneSource::operator==(const ZoneSource &other) const {
  return set == other.set && text == other.text;
}
