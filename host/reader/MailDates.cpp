// Date headers through GMime's tolerant parser; delimiter lines read here.
#include "host/reader/MailDates.h"

#include "host/reader/ReaderOptions.h"

#include <ctime>
#include <string>
#include <strings.h>
#include <vector>

namespace {

// Years a message can plausibly carry: outside them a date is a typo, not a time.
constexpr int kFirstYear = 1970;
constexpr int kLastYear = 2200;

std::vector<std::string_view> words(std::string_view line) {
  std::vector<std::string_view> found;
  size_t position = 0;
  while (found.size() < 16) {
    position = line.find_first_not_of(" \t\r\n", position);
    if (position == std::string_view::npos)
      break;
    size_t end = line.find_first_of(" \t\r\n", position);
    if (end == std::string_view::npos)
      end = line.size();
    found.push_back(line.substr(position, end - position));
    position = end;
  }
  return found;
}

int monthOf(std::string_view word) {
  static const char *const names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  if (word.size() != 3)
    return -1;
  for (int month = 0; month < 12; ++month)
    if (strncasecmp(word.data(), names[month], 3) == 0)
      return month;
  return -1;
}

bool number(std::string_view word, int low, int high, int &value) {
  if (word.empty() || word.size() > 4)
    return false;
  value = 0;
  for (const char c : word) {
    if (c < '0' || c > '9')
      return false;
    value = value * 10 + (c - '0');
  }
  return value >= low && value <= high;
}

bool clockTime(std::string_view word, struct tm &fields) {
  // "10:30:45" or "10:30"
  if (word.size() != 8 && word.size() != 5)
    return false;
  if (word[2] != ':' || (word.size() == 8 && word[5] != ':'))
    return false;
  int seconds = 0;
  if (!number(word.substr(0, 2), 0, 23, fields.tm_hour) ||
      !number(word.substr(3, 2), 0, 59, fields.tm_min) ||
      (word.size() == 8 && !number(word.substr(6, 2), 0, 60, seconds)))
    return false;
  fields.tm_sec = seconds;
  return true;
}

} // namespace

bool parseHeaderDate(std::string_view value, int64_t &utc) {
  readerOptions(); // GMime set up
  const std::string text(value);
  GDateTime *const date = g_mime_utils_header_decode_date(text.c_str());
  if (date == nullptr)
    return false;
  const int year = g_date_time_get_year(date);
  utc = g_date_time_to_unix(date);
  g_date_time_unref(date);
  return year >= kFirstYear && year <= kLastYear;
}

bool parseDelimiterDate(std::string_view line, int64_t &utc) {
  const std::vector<std::string_view> found = words(line);
  for (size_t i = 0; i + 3 < found.size(); ++i) {
    const int month = monthOf(found[i]);
    if (month < 0)
      continue;
    struct tm fields = {};
    int year = 0;
    if (!number(found[i + 1], 1, 31, fields.tm_mday) || !clockTime(found[i + 2], fields) ||
        !number(found[i + 3], kFirstYear, kLastYear, year))
      continue;
    fields.tm_mon = month;
    fields.tm_year = year - 1900;
    fields.tm_isdst = -1;
    const time_t seconds = mktime(&fields);
    if (seconds == static_cast<time_t>(-1))
      return false;
    utc = static_cast<int64_t>(seconds);
    return true;
  }
  return false;
}
