// The true date of a message: its Date header with the sender's zone, or the date of the
// delimiter line a mail client wrote ahead of it.
#pragma once

#include <cstdint>
#include <string_view>

// A Date value in RFC 5322 form or one of the obsolete forms real mail carries, to seconds
// since 1970 UTC. False when it holds no date.
bool parseHeaderDate(std::string_view value, int64_t &utc);

// The time of a delimiter line's date in the form "Thu Jan 15 10:30:45 1998" (the month name,
// the day, the time and the year; a weekday or a sender ahead of them is passed over). Mail
// clients write it in the local zone, as ctime does. False when there is none.
bool parseDelimiterDate(std::string_view line, int64_t &utc);
