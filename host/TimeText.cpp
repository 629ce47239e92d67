// Reading --since and --until, and writing a message's date.
#include "host/TimeText.h"

#include <cstdio>
#include <ctime>

time_t localMoment(int year, int month, int day, int hour, int minute, int second) {
  struct tm fields = {};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  fields.tm_isdst = -1;
  return mktime(&fields);
}

bool parseDateArgument(const std::string &text, bool endOfDay, int64_t &seconds) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  char separator = ' ';
  int consumed = -1;
  const char *line = text.c_str();
  const int whole = static_cast<int>(text.size());
  const auto matches = [&](int fields, int wanted) {
    return fields == wanted && consumed == whole;
  };
  bool dateOnly = false;
  if (matches(std::sscanf(line, "%4d-%2d-%2d%n", &year, &month, &day, &consumed), 3)) {
    dateOnly = true;
  } else if (!matches(std::sscanf(line, "%4d-%2d-%2d%c%2d:%2d%n", &year, &month, &day, &separator,
                                  &hour, &minute, &consumed),
                      6) &&
             !matches(std::sscanf(line, "%4d-%2d-%2d%c%2d:%2d:%2d%n", &year, &month, &day,
                                  &separator, &hour, &minute, &second, &consumed),
                      7)) {
    return false;
  }
  if (separator != ' ' && separator != 'T')
    return false;
  if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 60 ||
      hour < 0 || minute < 0 || second < 0 || year < 1900)
    return false;
  const bool wholeDay = dateOnly && endOfDay;
  const time_t result = localMoment(year, month, day, wholeDay ? 23 : hour, wholeDay ? 59 : minute,
                                    wholeDay ? 59 : second);
  if (result == static_cast<time_t>(-1))
    return false;
  seconds = static_cast<int64_t>(result);
  return true;
}

std::string formatDate(bool hasDate, int64_t seconds) {
  if (!hasDate)
    return "-";
  const time_t value = static_cast<time_t>(seconds);
  struct tm local = {};
  if (localtime_r(&value, &local) == nullptr)
    return "-";
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local);
  return text;
}
