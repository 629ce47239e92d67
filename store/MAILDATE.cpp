// CMailDate: tokens, then a time, a day, a month and a year, each found by its own rule.
#include "store/MAILDATE.h"

#include "include/tuk/AgentLog.h"
#include "resources/resource.h"

#include <algorithm>
#include <climits>
#include <cstring>

AGENT_LOG_SOURCE(".\\MAILDATE");

namespace {

// The month names of the string table, and for each byte the months whose name starts with
// it, so that one pass over a text finds every name in it.
struct MonthNames {
  CString names[12];
  uint16_t startingWith[256] = {};
  bool loaded = false;

  void load() {
    for (int m = 0; m < 12; ++m) {
      names[m].LoadString(IDS_MONTH_FIRST + m);
      if (!names[m].IsEmpty())
        startingWith[static_cast<unsigned char>(names[m][0])] |= static_cast<uint16_t>(1u << m);
    }
    loaded = true;
  }
};
MonthNames months;

bool isDigit(char ch) {
  return ch >= '0' && ch <= '9';
}

// atoi over the bytes from `p` to `end`, without its undefined overflow: leading white space,
// a sign, digits; clamped to 32 bits. A zero byte ends the number as it ends a C string.
int32_t toInt(const char *p, const char *end) {
  while (p != end && (*p == ' ' || (*p >= '\t' && *p <= '\r')))
    ++p;
  bool negative = false;
  if (p != end && (*p == '+' || *p == '-'))
    negative = *p++ == '-';
  int64_t value = 0;
  for (; p != end && isDigit(*p); ++p) {
    value = value * 10 + (*p - '0');
    if (value > int64_t{INT32_MAX} + 1)
      value = int64_t{INT32_MAX} + 1;
  }
  value = negative ? -value : value;
  return value > INT32_MAX ? INT32_MAX : static_cast<int32_t>(value);
}

} // namespace

CMailDate::CMailDate(const CString &text) : text_(text) {
  AGENT_LOG("CMailDate constructor: %s", text.GetString());
  if (!months.loaded)
    months.load();
  if (tokenise() == 0) {
    valid = 0;
    return;
  }
  valid = parseTime();
  if (valid)
    valid = parseDay();
  if (valid)
    valid = parseMonth();
  if (valid)
    valid = parseYear();
}

int CMailDate::tokenise() {
  const char *const text = text_.GetString();
  const char *const end = text + text_.GetLength();
  const char *at = text;
  int count = 0;
  while (count < kMaxTokens) {
    while (at != end && *at == ' ')
      ++at;
    if (at == end)
      break;
    tokens_[count] = static_cast<int32_t>(at - text);
    while (at != end && *at != ' ')
      ++at;
    tokenEnds_[count++] = static_cast<int32_t>(at - text);
  }
  tokens_[count] = text_.GetLength();
  tokenCount_ = count;
  return count;
}

int CMailDate::parseTime() {
  hour = minute = second = 0;
  // The time is the word behind the blank that ends a token: up to the next blank, or to a
  // zero byte, which ends it as it ends a C string.
  const char *const text = text_.GetString();
  const int length = text_.GetLength();
  int start = 0, end = 0, colon = -1;
  for (int token = 0; token < tokenCount_ && colon < 0; ++token) {
    const int blank = tokenEnds_[token];
    if (blank == length)
      continue;
    start = end = blank + 1;
    while (end < length && text[end] != ' ' && text[end] != '\0')
      ++end;
    const void *found = std::memchr(text + start, ':', static_cast<size_t>(end - start));
    if (found)
      colon = static_cast<int>(static_cast<const char *>(found) - text);
  }
  if (colon < 0)
    return 0;

  const bool secondColon = end > colon + 3 && text[colon + 3] == ':';
  hour = toInt(text + start, text + colon);
  minute = toInt(text + colon + 1, text + std::min(colon + 3, end));
  if (secondColon)
    second = toInt(text + colon + 4, text + std::min(colon + 6, end));
  return 1;
}

int CMailDate::parseDay() {
  for (int token = 0; token < tokenCount_; ++token) {
    const int length = tokenLength(token);
    if (length == 1 || length == 2) {
      const char *digits = text_.GetString() + tokens_[token];
      day = toInt(digits, digits + length);
      return 1;
    }
  }
  return 0;
}

int CMailDate::parseMonth() {
  // The calendar decides between two names in one text, not their order in it: the first
  // month whose name stands anywhere in the text.
  const auto *const text = reinterpret_cast<const unsigned char *>(text_.GetString());
  const auto *const end = text + text_.GetLength();
  int found = 12;
  for (const unsigned char *at = text; at != end; ++at) {
    unsigned starting = months.startingWith[*at];
    if (starting == 0)
      continue;
    for (; starting != 0; starting &= starting - 1) {
      const int m = __builtin_ctz(starting);
      if (m >= found)
        break;
      const CString &name = months.names[m];
      if (name.GetLength() <= end - at &&
          std::memcmp(at, name.GetString(), static_cast<size_t>(name.GetLength())) == 0)
        found = m;
    }
    if (found == 0)
      break;
  }
  if (found == 12)
    return 0;
  month = found;
  return 1;
}

int CMailDate::parseYear() {
  bool passedTwoDigits = false;
  for (int token = 0; token < tokenCount_; ++token) {
    const int length = tokenLength(token);
    const bool leadingDigit = isDigit(text_[tokens_[token]]);
    if (leadingDigit && (length == 4 || (length == 2 && passedTwoDigits))) {
      const char *digits = text_.GetString() + tokens_[token];
      const int32_t value = toInt(digits, digits + length);
      year = length == 4 ? value - 1900 : value;
      return 1;
    }
    if (leadingDigit && length == 2)
      passedTwoDigits = true;
  }
  return 0;
}
