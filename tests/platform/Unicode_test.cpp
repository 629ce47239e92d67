// UTF-16 and the UTF-8 code page: the sizing rules of the Win32 calls, and what happens to
// text that has no counterpart.
#include "platform/Files.h"
#include "platform/Unicode.h"

#include <gtest/gtest.h>
#include <string>

namespace {
std::string toBytes(const std::u16string &wide, int length = -1) {
  const int size =
      WideCharToMultiByte(CP_ACP, 0, wide.c_str(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<size_t>(size), '\0');
  EXPECT_EQ(size, WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), length, bytes.data(), size, nullptr,
                                      nullptr));
  return bytes;
}

TEST(UnicodeTest, WideToBytesMeasuresWithTheZeroAndRefusesASmallBuffer) {
  EXPECT_EQ(std::string("a\xC3\xA9\xF0\x9F\x98\x80", 7) + '\0', toBytes(u"a\u00E9\U0001F600"));
  EXPECT_EQ(std::string("\xEF\xBF\xBDx", 4) + '\0', toBytes(u"\xD800x")); // a lone surrogate
  char small[3];
  EXPECT_EQ(0, WideCharToMultiByte(CP_ACP, 0, u"abc", -1, small, 3, nullptr, nullptr));
  EXPECT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
  EXPECT_EQ(0, WideCharToMultiByte(1252, 0, u"abc", -1, nullptr, 0, nullptr, nullptr));
}

TEST(UnicodeTest, BytesToWideRefusesMalformedTextOnlyWhenAsked) {
  const char *malformed[] = {"\xC0\xAF",         // overlong
                             "\xED\xA0\x80",     // a surrogate
                             "\xF4\x90\x80\x80", // past U+10FFFF
                             "\xE2\x82",         // cut short
                             "\xE9"};
  for (const char *bytes : malformed) {
    SCOPED_TRACE(bytes);
    EXPECT_EQ(0, MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, bytes, -1, nullptr, 0));
    EXPECT_EQ(ERROR_NO_UNICODE_TRANSLATION, GetLastError());
    EXPECT_GT(MultiByteToWideChar(CP_ACP, 0, bytes, -1, nullptr, 0), 0);
  }
  char16_t wide[4] = {};
  EXPECT_EQ(3, MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "\xF0\x9F\x98\x80", -1, wide, 4));
  EXPECT_EQ(std::u16string(u"\U0001F600"), std::u16string(wide));
  EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, "abc", -1, wide, 3));
  EXPECT_EQ(ERROR_INSUFFICIENT_BUFFER, GetLastError());
}
} // namespace
