// The scanf subset of delimiter lines, read straight from mapped bytes.
#include "clients/ScanFormat.h"

#include <climits>
#include <cstring>

namespace {

bool isSpace(unsigned char ch) { return ch == ' ' || (ch >= '\t' && ch <= '\r'); }

bool isDigit(unsigned char ch) { return ch >= '0' && ch <= '9'; }

// The input, ended by `end` or by a zero byte, as a zero ends the C string that sscanf
// reads. The zero is met as the reader comes to it: a parse that stops early never looks at
// the rest of a long line.
class Input {
public:
  Input(const unsigned char *begin, const unsigned char *end) : at_(begin), end_(end) {}
  bool atEnd() const { return at_ == end_ || *at_ == 0; }
  unsigned char peek() const { return *at_; }
  void next() { ++at_; }
  void skipSpace() {
    while (!atEnd() && isSpace(peek()))
      next();
  }

private:
  const unsigned char *at_;
  const unsigned char *end_;
};

} // namespace

int scanFormat(const char *format, const unsigned char *begin, const unsigned char *end,
               ScanFields &fields) {
  Input input(begin, end);
  int conversions = 0;
  int words = 0;
  int numbers = 0;
  // sscanf gives EOF for an input failure ahead of the first conversion.
  auto inputFailure = [&] { return conversions == 0 ? -1 : conversions; };

  for (const char *f = format; *f; ++f) {
    const unsigned char directive = static_cast<unsigned char>(*f);
    if (isSpace(directive)) {
      input.skipSpace();
      continue;
    }
    if (directive != '%' || f[1] == '%') {
      if (directive == '%')
        ++f;
      if (input.atEnd())
        return inputFailure();
      if (input.peek() != static_cast<unsigned char>(*f))
        return conversions;
      input.next();
      continue;
    }
    const char conversion = *++f;
    input.skipSpace();
    if (input.atEnd())
      return inputFailure();
    if (conversion == 's') {
      char word[kMaxScanWord];
      size_t length = 0;
      while (!input.atEnd() && !isSpace(input.peek())) {
        if (length + 1 == kMaxScanWord)
          return conversions;  // it would not fit its field: no conversion
        word[length++] = static_cast<char>(input.peek());
        input.next();
      }
      word[length] = 0;
      if (words < 3)
        std::memcpy(fields.words[words], word, length + 1);
      ++words;
      ++conversions;
    } else if (conversion == 'd') {
      bool negative = false;
      if (input.peek() == '+' || input.peek() == '-') {
        negative = input.peek() == '-';
        input.next();
      }
      if (input.atEnd() || !isDigit(input.peek()))
        return conversions;
      int64_t value = 0;
      for (; !input.atEnd() && isDigit(input.peek()); input.next())
        value = value > INT32_MAX ? value : value * 10 + (input.peek() - '0');
      value = negative ? -value : value;
      if (numbers < 5)
        fields.numbers[numbers] = value > INT32_MAX   ? INT32_MAX
                                  : value < INT32_MIN ? INT32_MIN
                                                      : static_cast<int32_t>(value);
      ++numbers;
      ++conversions;
    } else {
      return conversions;  // a directive this reader does not know ends the scan
    }
  }
  return conversions;
}
