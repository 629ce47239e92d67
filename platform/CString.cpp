// CString: byte strings with the MFC operations the agent uses.
#include "CString.h"

#include <cstring>

char asciiToLower(char ch) {
  return (ch >= 'A' && ch <= 'Z') ? static_cast<char>(ch + ('a' - 'A')) : ch;
}

char asciiToUpper(char ch) {
  return (ch >= 'a' && ch <= 'z') ? static_cast<char>(ch - ('a' - 'A')) : ch;
}

int asciiCompareNoCase(const char *left, const char *right, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    const unsigned char l = static_cast<unsigned char>(asciiToLower(left[i]));
    const unsigned char r = static_cast<unsigned char>(asciiToLower(right[i]));
    if (l != r)
      return l < r ? -1 : 1;
    if (l == 0)
      return 0;
  }
  return 0;
}

CString::CString(const char *text) : text_(text ? text : "") {}

CString::CString(const char *bytes, int length) {
  if (bytes && length > 0)
    text_.assign(bytes, static_cast<size_t>(length));
}

CString::CString(char ch, int repeat) {
  if (repeat > 0)
    text_.assign(static_cast<size_t>(repeat), ch);
}

CString &CString::operator=(const char *text) {
  text_ = text ? text : "";
  return *this;
}

CString &CString::operator=(char ch) {
  text_.assign(1, ch);
  return *this;
}

CString &CString::operator+=(const CString &other) {
  text_ += other.text_;
  return *this;
}

CString &CString::operator+=(const char *text) {
  if (text)
    text_ += text;
  return *this;
}

CString &CString::operator+=(char ch) {
  text_ += ch;
  return *this;
}

CString &CString::Append(const char *bytes, int length) {
  if (bytes && length > 0)
    text_.append(bytes, static_cast<size_t>(length));
  return *this;
}

int CString::Find(char ch, int start) const {
  if (start < 0 || static_cast<size_t>(start) >= text_.size())
    return -1;
  const size_t at = text_.find(ch, static_cast<size_t>(start));
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::Find(const char *sub, int start) const {
  if (start < 0 || static_cast<size_t>(start) > text_.size() || sub == nullptr)
    return -1;
  const size_t at = text_.find(sub, static_cast<size_t>(start));
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::ReverseFind(char ch) const {
  const size_t at = text_.rfind(ch);
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

CString CString::Left(int count) const {
  CString result;
  if (count > 0)
    result.text_ = text_.substr(0, static_cast<size_t>(count));
  return result;
}

CString CString::Mid(int first) const {
  return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
  if (first < 0)
    first = 0;
  CString result;
  if (count > 0 && static_cast<size_t>(first) < text_.size())
    result.text_ = text_.substr(static_cast<size_t>(first), static_cast<size_t>(count));
  return result;
}

CString CString::SpanExcluding(const char *set) const {
  CString result;
  // The view as a C string: a zero byte ends the span as it ends the text.
  result.text_.assign(text_.c_str(), std::strcspn(text_.c_str(), set ? set : ""));
  return result;
}

void CString::MakeLower() {
  for (char &ch : text_)
    ch = asciiToLower(ch);
}

void CString::MakeUpper() {
  for (char &ch : text_)
    ch = asciiToUpper(ch);
}

int CString::Compare(const char *other) const {
  return std::strcmp(text_.c_str(), other ? other : "");
}

int CString::CompareNoCase(const char *other) const {
  const char *right = other ? other : "";
  return asciiCompareNoCase(text_.c_str(), right, std::strlen(text_.c_str()) + 1);
}

CString operator+(const CString &left, const CString &right) {
  CString result(left);
  result += right;
  return result;
}

CString operator+(const CString &left, const char *right) {
  CString result(left);
  result += right;
  return result;
}

CString operator+(const char *left, const CString &right) {
  CString result(left);
  result += right;
  return result;
}

CString operator+(const CString &left, char right) {
  CString result(left);
  result += right;
  return result;
}

bool operator==(const CString &left, const CString &right) {
  return left.bytes() == right.bytes();
}
bool operator==(const CString &left, const char *right) {
  return left.bytes() == (right ? right : "");
}
bool operator!=(const CString &left, const CString &right) {
  return !(left == right);
}
bool operator!=(const CString &left, const char *right) {
  return !(left == right);
}
