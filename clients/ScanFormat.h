// ScanProgram: a bounded reader of the scanf directives a delimiter format uses (white space,
// ordinary characters, %s and %d), with the standard meaning of sscanf over [begin, end).
//
// It differs from sscanf only where sscanf has no safe answer: a zero byte ends the input as
// it ends a C string, a word of kMaxScanWord characters or more fails its conversion instead
// of overflowing a field, and a number too large for 32 bits is clamped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

constexpr size_t kMaxScanWord = 100; // a word's field, terminator included

struct ScanFields {
  char words[3][kMaxScanWord];
  int32_t numbers[5];
};

// A format read once into its directives, for the many lines a scan reads with it.
class ScanProgram {
public:
  explicit ScanProgram(const char *format);

  // The number of conversions made, as sscanf counts them (-1 when the input ends before the
  // first conversion). Words beyond three or numbers beyond five are read and not stored;
  // the fields no conversion filled are left empty and zero.
  int scan(const unsigned char *begin, const unsigned char *end, ScanFields &fields) const;

private:
  enum class Step : unsigned char {
    Space,     // any white space, none included
    Character, // one ordinary character, which the input must show
    Word,      // %s
    Number,    // %d
    Unknown,   // a conversion this reader does not know: the scan ends there
  };
  struct Directive {
    Step step;
    unsigned char character; // of a Character
  };
  std::vector<Directive> directives_;
};

// The same for a format read once.
int scanFormat(const char *format, const unsigned char *begin, const unsigned char *end,
               ScanFields &fields);
