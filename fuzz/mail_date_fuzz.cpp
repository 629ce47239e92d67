// CMailDate over arbitrary text: a text gives all six numbers or none, each number within
// what its rule can make of the text, and the month is the first name of the calendar that
// occurs in the text.
#include "fuzz/FuzzSupport.h"
#include "resources/resource.h"
#include "store/MAILDATE.h"
#include <string>

namespace {
bool within(int32_t value, int32_t low, int32_t high) {
  return value >= low && value <= high;
}
} // namespace

extern "C" int FUZZ_ENTRY(const uint8_t *data, size_t size) {
  bringAgentUp();
  if (size > 4096)
    return 0;
  const CString text(reinterpret_cast<const char *>(data), static_cast<int>(size));
  const CMailDate date(text);
  const int32_t fields[6] = {date.getHour(), date.getMinute(), date.getSecond(),
                             date.getDay(),  date.getMonth(),  date.getYear()};
  // The month is never -1 in a valid date, so it tells validity.
  if (date.getMonth() == -1) {
    for (const int32_t field : fields)
      FUZZ_CHECK(field == -1);
    return 0;
  }
  FUZZ_CHECK(within(date.getMonth(), 0, 11));
  // Day, minute and second are read from at most two bytes, a sign allowed.
  FUZZ_CHECK(within(date.getDay(), -9, 99));
  FUZZ_CHECK(within(date.getMinute(), -9, 99));
  FUZZ_CHECK(within(date.getSecond(), -9, 99));
  // A year of four characters with a leading digit, or of two behind a two-character day.
  FUZZ_CHECK(within(date.getYear(), -1900, 9999 - 1900));
  FUZZ_CHECK(text.Find(':') >= 0);
  for (int32_t month = 0; month <= date.getMonth(); ++month) {
    CString name;
    name.LoadString(IDS_MONTH_FIRST + static_cast<UINT>(month));
    const bool occurs = text.bytes().find(name.bytes()) != std::string::npos;
    FUZZ_CHECK(occurs == (month == date.getMonth()));
  }
  // Parsing is a function of the text alone.
  const CMailDate again(text);
  FUZZ_CHECK(again.getHour() == fields[0] && again.getMinute() == fields[1] &&
             again.getSecond() == fields[2] && again.getDay() == fields[3] &&
             again.getMonth() == fields[4] && again.getYear() == fields[5]);
  return 0;
}
