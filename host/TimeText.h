// Times as a person reads and writes them, in the local time zone (the agent's times come
// from mktime in the same zone).
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

// "YYYY-MM-DD", "YYYY-MM-DD HH:MM" or "YYYY-MM-DD HH:MM:SS" (a "T" may stand for the blank).
// A bare date is its first second, or with `endOfDay` its last. False when it is no date.
bool parseDateArgument(const std::string &text, bool endOfDay, int64_t &seconds);

// The time of a moment in the local zone, as mktime reads it (fields past their range carry
// over: day 0 is the last of the month before); -1 when there is none.
time_t localMoment(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);

// "YYYY-MM-DD HH:MM" in the local zone, or "-" for a message without a date.
std::string formatDate(bool hasDate, int64_t seconds);
