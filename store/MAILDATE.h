// CMailDate: a tolerant reader of a Date header's text.
//
// It looks through blank-separated tokens for a time, a day, a month name and a year, each by
// its own rule; a text either gives all six numbers or none. No zone is read: the numbers are
// local time.
#pragma once

#include "platform/CString.h"

#include <cstdint>

class CMailDate {
public:
  explicit CMailDate(const CString &text);

  // Each gives its field when the text was valid, else -1.
  int32_t getHour() const { return valid ? hour : -1; }
  int32_t getMinute() const { return valid ? minute : -1; }
  int32_t getSecond() const { return valid ? second : -1; }
  int32_t getDay() const { return valid ? day : -1; }
  int32_t getMonth() const { return valid ? month : -1; } // January is 0
  int32_t getYear() const { return valid ? year : -1; }   // years since 1900

  // Token starts, then the text's length behind the last entered token. Only the first
  // kMaxTokens tokens are entered; a time may still be found behind the last of them.
  static constexpr int kMaxTokens = 9;

private:
  int tokenise();
  int parseTime();
  int parseDay();
  int parseMonth();
  int parseYear();
  int tokenLength(int token) const { return tokenEnds_[token] - tokens_[token]; }

  // The text is read only while the constructor runs.
  const CString &text_;
  int32_t tokens_[kMaxTokens + 1] = {};
  // Where each token ends: its first blank, or the text's end.
  int32_t tokenEnds_[kMaxTokens] = {};
  int tokenCount_ = 0;

  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
  int32_t day = 0;
  int32_t month = 0;
  int32_t year = 0;
  int32_t valid = 0;
};
