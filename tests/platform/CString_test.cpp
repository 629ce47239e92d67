// CString and CStringList: the operations the mailbox scan and the header code rely on.
#include "platform/CString.h"
#include "platform/StringList.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> elementsOf(const CStringList &list) {
  std::vector<std::string> elements;
  for (POSITION at = list.GetHeadPosition(); at != nullptr;)
    elements.push_back(list.GetNext(at).bytes());
  return elements;
}

}  // namespace

TEST(CStringTest, FindIsCaseSensitiveAndFindsAnEmptyTextAtTheStart) {
  const CString path("C:/mail/In.mbx");
  EXPECT_EQ(path.Find(""), 0);
  EXPECT_EQ(path.Find("", 5), 5);
  EXPECT_EQ(path.Find("", path.GetLength()), path.GetLength());
  EXPECT_EQ(path.Find("", path.GetLength() + 1), -1);
  EXPECT_EQ(path.Find(".mbx"), 10);
  EXPECT_EQ(path.Find(".MBX"), -1);
}

TEST(CStringTest, CaseMappingAndComparisonTouchOnlyAsciiLetters) {
  // UTF-8 "Ä" is C3 84, Latin-1 "é" is E9: neither may change, whatever the locale.
  CString text("Ab\xC3\x84z_\xE9");
  text.MakeLower();
  EXPECT_EQ(text, "ab\xC3\x84z_\xE9");
  text.MakeUpper();
  EXPECT_EQ(text, "AB\xC3\x84Z_\xE9");
  EXPECT_EQ(text.CompareNoCase("ab\xC3\x84z_\xE9"), 0);
  EXPECT_NE(text.CompareNoCase("ab\xC3\xA4z_\xC9"), 0);
  EXPECT_LT(CString("abc").CompareNoCase("ABCD"), 0);
  EXPECT_GT(CString("\xE9").Compare("z"), 0);  // byte order is unsigned
}

TEST(CStringTest, SpanExcludingStopsAtTheFirstByteOfTheSet) {
  EXPECT_EQ(CString("text/plain; charset=x").SpanExcluding(";, "), "text/plain");
  EXPECT_EQ(CString("plain").SpanExcluding(";"), "plain");
  EXPECT_EQ(CString(";x").SpanExcluding(";"), "");
  EXPECT_EQ(CString("plain").SpanExcluding(""), "plain");
}

TEST(CStringTest, LeftMidAndRightClampToTheString) {
  const CString text("abcdef");
  EXPECT_EQ(text.Left(0), "");
  EXPECT_EQ(text.Left(-1), "");
  EXPECT_EQ(text.Left(10), "abcdef");
  EXPECT_EQ(text.Mid(2), "cdef");
  EXPECT_EQ(text.Mid(6), "");
  EXPECT_EQ(text.Mid(7), "");
  EXPECT_EQ(text.Mid(-2, 3), "abc");
  EXPECT_EQ(text.Mid(4, 10), "ef");
  EXPECT_EQ(text.Mid(1, 0), "");
  EXPECT_EQ(text.Right(2), "ef");
  EXPECT_EQ(text.Right(9), "abcdef");
}

TEST(CStringListTest, RemoveAtKeepsTheOrderOfTheRest) {
  CStringList list;
  POSITION at[5];
  const char *names[] = {"a", "b", "c", "d", "e"};
  for (int i = 0; i < 5; ++i)
    at[i] = list.AddTail(names[i]);
  list.RemoveAt(at[0]);  // head
  list.RemoveAt(at[2]);  // middle
  list.RemoveAt(at[4]);  // tail
  EXPECT_EQ(elementsOf(list), (std::vector<std::string>{"b", "d"}));
  EXPECT_EQ(list.GetCount(), 2);
  list.AddTail("f");
  EXPECT_EQ(elementsOf(list), (std::vector<std::string>{"b", "d", "f"}));

  list.RemoveAt(at[1]);
  list.RemoveAt(at[3]);
  list.RemoveAt(list.GetHeadPosition());
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_EQ(list.GetHeadPosition(), nullptr);
  list.AddTail("g");
  EXPECT_EQ(elementsOf(list), (std::vector<std::string>{"g"}));
}
