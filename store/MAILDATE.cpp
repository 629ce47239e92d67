// CMailDate: tokens, then a time, a day, a month and a year, each found by its own rule.
#include "store/MAILDATE.h"

#include "agent/Log.h"
#include "resources/resource.h"

#include <climits>

AGENT_LOG_SOURCE(".\\MAILDATE");

namespace {

CString monthNames[12];
bool monthNamesLoaded = false;

bool isDigit(char ch) { return ch >= '0' && ch <= '9'; }

// atoi without its undefined overflow: leading white space, a sign, digits; clamped to 32 bits.
int32_t toInt(const CString &text) {
  const char *p = text.GetString();
  while (*p == ' ' || (*p >= '\t' && *p <= '\r'))
    ++p;
  bool negative = false;
  if (*p == '+' || *p == '-')
    negative = *p++ == '-';
  int64_t value = 0;
  for (; isDigit(*p); ++p) {
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
  if (!monthNamesLoaded) {
    for (int m = 0; m < 12; ++m)
      monthNames[m].LoadString(IDS_MONTH_FIRST + m);
    monthNamesLoaded = true;
  }
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
  const int length = text_.GetLength();
  tokenCount_ = 0;
  for (int i = 0; i < length && tokenCount_ < kMaxTokens; ++i) {
    if (text_[i] != ' ' && (i == 0 || text_[i - 1] == ' '))
      tokens_[tokenCount_++] = i;
  }
  tokens_[tokenCount_] = length;
  return tokenCount_;
}

int CMailDate::tokenLength(int token) const {
  const int blank = text_.Find(' ', tokens_[token]);
  return (blank < 0 ? text_.GetLength() : blank) - tokens_[token];
}

int CMailDate::parseTime() {
  hour = minute = second = 0;
  CString timeText;
  bool found = false;
  for (int token = 0; token < tokenCount_ && !found; ++token) {
    const int blank = text_.Find(' ', tokens_[token]);
    if (blank < 0 || blank >= tokens_[token + 1])
      continue;
    timeText = text_.Mid(blank + 1).SpanExcluding(" ");
    found = timeText.Find(':') >= 0;
  }
  if (!found)
    return 0;

  const int colon = timeText.Find(':');
  const bool secondColon = timeText.GetLength() > colon + 3 && timeText[colon + 3] == ':';
  hour = toInt(timeText.Left(colon));
  minute = toInt(timeText.Mid(colon + 1, 2));
  if (secondColon)
    second = toInt(timeText.Mid(colon + 4, 2));
  return 1;
}

int CMailDate::parseDay() {
  for (int token = 0; token < tokenCount_; ++token) {
    const int length = tokenLength(token);
    if (length == 1 || length == 2) {
      day = toInt(text_.Mid(tokens_[token], length));
      return 1;
    }
  }
  return 0;
}

int CMailDate::parseMonth() {
  // The calendar decides between two names in one text, not their order in it.
  for (int m = 0; m < 12; ++m) {
    if (!monthNames[m].IsEmpty() && text_.Find(monthNames[m]) >= 0) {
      month = m;
      return 1;
    }
  }
  return 0;
}

int CMailDate::parseYear() {
  bool passedTwoDigits = false;
  for (int token = 0; token < tokenCount_; ++token) {
    const int length = tokenLength(token);
    const bool leadingDigit = isDigit(text_[tokens_[token]]);
    if (leadingDigit && (length == 4 || (length == 2 && passedTwoDigits))) {
      const int32_t value = toInt(text_.Mid(tokens_[token], length));
      year = length == 4 ? value - 1900 : value;
      return 1;
    }
    if (leadingDigit && length == 2)
      passedTwoDigits = true;
  }
  return 0;
}
