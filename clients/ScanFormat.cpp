// ScanProgram: the scanf subset of delimiter lines, read straight from mapped bytes.
#include "clients/ScanFormat.h"

#include <climits>
#include <cstring>

namespace {

bool isSpace(unsigned char ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

bool isDigit(unsigned char ch) {
  return ch >= '0' && ch <= '9';
}

// What ends a word: white space, or a zero byte, which ends the input as it ends the C string
// that sscanf reads.
bool endsWord(unsigned char ch) {
  return ch == 0 || isSpace(ch);
}

} // namespace

ScanProgram::ScanProgram(const char *format) {
  // A run of white space in the format skips what one blank skips.
  const auto skipSpace = [this] {
    if (directives_.empty() || directives_.back().step != Step::Space)
      directives_.push_back({Step::Space, 0});
  };
  for (const char *f = format; *f; ++f) {
    const auto directive = static_cast<unsigned char>(*f);
    if (isSpace(directive)) {
      skipSpace();
    } else if (directive != '%') {
      directives_.push_back({Step::Character, directive});
    } else if (f[1] == '%') {
      // "%%" is a conversion that stores nothing: white space ahead of it is skipped too.
      skipSpace();
      directives_.push_back({Step::Character, '%'});
      ++f;
    } else {
      const char conversion = *++f;
      directives_.push_back({conversion == 's'   ? Step::Word
                             : conversion == 'd' ? Step::Number
                                                 : Step::Unknown,
                             0});
      if (conversion == 0)
        break;
    }
  }
}

int ScanProgram::scan(const unsigned char *begin, const unsigned char *end,
                      ScanFields &fields) const {
  for (char *word : fields.words)
    word[0] = 0;
  for (int32_t &number : fields.numbers)
    number = 0;
  // The input ends at `end` or at a zero byte. The zero is met as the reader comes to it: a
  // parse that stops early never looks at the rest of a long line.
  const unsigned char *at = begin;
  const auto atEnd = [&] { return at == end || *at == 0; };
  const auto skipSpace = [&] {
    while (at != end && isSpace(*at))
      ++at;
  };
  int conversions = 0;
  int words = 0;
  int numbers = 0;
  // sscanf gives EOF for an input failure ahead of the first conversion.
  const auto inputFailure = [&] { return conversions == 0 ? -1 : conversions; };

  for (const Directive &directive : directives_) {
    switch (directive.step) {
    case Step::Space:
      skipSpace();
      continue;
    case Step::Character:
      if (atEnd())
        return inputFailure();
      if (*at != directive.character)
        return conversions;
      ++at;
      continue;
    case Step::Unknown:
      // sscanf skips white space ahead of a conversion, and an input failure comes first.
      skipSpace();
      return atEnd() ? inputFailure() : conversions;
    case Step::Word:
    case Step::Number:
      break;
    }
    skipSpace();
    if (atEnd())
      return inputFailure();
    if (directive.step == Step::Word) {
      // A word fills its field with its terminator: one of kMaxScanWord characters or more
      // would not fit, and fails its conversion.
      const unsigned char *const start = at;
      const size_t room = kMaxScanWord - 1;
      const unsigned char *const limit = static_cast<size_t>(end - at) > room ? at + room : end;
      while (at != limit && !endsWord(*at))
        ++at;
      if (at != end && !endsWord(*at))
        return conversions;
      if (words < 3) {
        const auto length = static_cast<size_t>(at - start);
        std::memcpy(fields.words[words], start, length);
        fields.words[words][length] = 0;
      }
      ++words;
    } else {
      bool negative = false;
      if (*at == '+' || *at == '-') {
        negative = *at == '-';
        ++at;
      }
      if (at == end || !isDigit(*at))
        return conversions;
      int64_t value = 0;
      for (; at != end && isDigit(*at); ++at)
        value = value > INT32_MAX ? value : value * 10 + (*at - '0');
      value = negative ? -value : value;
      if (numbers < 5)
        fields.numbers[numbers] = value > INT32_MAX   ? INT32_MAX
                                  : value < INT32_MIN ? INT32_MIN
                                                      : static_cast<int32_t>(value);
      ++numbers;
    }
    ++conversions;
  }
  return conversions;
}

int scanFormat(const char *format, const unsigned char *begin, const unsigned char *end,
               ScanFields &fields) {
  return ScanProgram(format).scan(begin, end, fields);
}
