// Local calendar time to seconds since the epoch, as mktime gives it with tm_isdst -1.
//
// glibc's mktime looks the time zone up again on every call, which without TZ set is a
// status call on /etc/localtime; a walk converts one date per message. The conversion here
// takes the zone as it stood at the last refreshTimeZone (or at the first conversion) and
// hands every time near a change of the zone's offset, and every time of a zone that counts
// leap seconds, to mktime itself, so its results are mktime's.
#pragma once

#include <ctime>

// Reads the time zone again: the TZ variable and the file it names. What was learned of the
// zone is kept while neither changed.
void refreshTimeZone();

// mktime(fields) with fields.tm_isdst taken as -1; -1 where mktime fails.
time_t localTimeToSeconds(const struct tm &fields);
