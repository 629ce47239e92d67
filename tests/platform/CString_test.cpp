// CString: what the mailbox scan and the header code rely on.
#include "platform/CString.h"
#include <gtest/gtest.h>
#include <string>

TEST(CStringTest, CaseTouchesOnlyAsciiLettersAndCutsClampToTheString) {
  // UTF-8 "Ä" is C3 84, Latin-1 "é" is E9: neither may change, whatever the locale.
  CString text("Ab\xC3\x84z_\xE9");
  text.MakeUpper();
  EXPECT_EQ(text, "AB\xC3\x84Z_\xE9");
  text.MakeLower();
  EXPECT_EQ(text, "ab\xC3\x84z_\xE9");
  EXPECT_NE(text.CompareNoCase("ab\xC3\xA4z_\xC9"), 0);
  EXPECT_LT(CString("abc").CompareNoCase("ABCD"), 0);
  EXPECT_GT(CString("\xE9").Compare("z"), 0); // byte order is unsigned
  EXPECT_EQ(CString("In.mbx").Find(".MBX"), -1);
  EXPECT_EQ(CString("ab").Find("", 3), -1);
  EXPECT_EQ(CString("text/plain; charset=x").SpanExcluding(";, "), "text/plain");
  const CString cut("abcdef");
  const std::pair<CString, const char *> cuts[] = {{cut.Left(-1), ""},
                                                   {cut.Left(10), "abcdef"},
                                                   {cut.Mid(7), ""},
                                                   {cut.Mid(-2, 3), "abc"},
                                                   {cut.Mid(4, 10), "ef"}};
  for (const auto &[got, expected] : cuts)
    EXPECT_EQ(got, expected);
}
