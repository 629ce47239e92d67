// CString: a byte string in the platform's multi-byte code page.
//
// Holds any bytes, zero bytes included; the C-string view ends at the first zero.
// Case mapping and case-blind comparison are ASCII-only: other bytes stay as they are.
#pragma once

#include "WinTypes.h"

#include <string>

class CString {
public:
  CString() = default;
  CString(const char *text); // null gives an empty string
  CString(const char *bytes, int length);
  CString(char ch, int repeat = 1);

  int GetLength() const { return static_cast<int>(text_.size()); }
  bool IsEmpty() const { return text_.empty(); }
  void Empty() { text_.clear(); }
  const char *GetString() const { return text_.c_str(); }
  operator const char *() const { return text_.c_str(); }
  char GetAt(int index) const { return text_[static_cast<size_t>(index)]; }
  char operator[](int index) const { return GetAt(index); }

  CString &operator=(const char *text);
  CString &operator=(char ch);
  CString &operator+=(const CString &other);
  CString &operator+=(const char *text);
  CString &operator+=(char ch);
  // Appends `length` bytes as they are, zero bytes included.
  CString &Append(const char *bytes, int length);

  // Position of the first occurrence at or after `start`, or -1. An empty text is found at
  // `start` (0 by default).
  int Find(char ch, int start = 0) const;
  int Find(const char *sub, int start = 0) const;
  int ReverseFind(char ch) const;

  CString Left(int count) const;
  CString Mid(int first) const;
  CString Mid(int first, int count) const;
  // The leading run of bytes that are not in `set`.
  CString SpanExcluding(const char *set) const;

  void MakeLower();
  void MakeUpper();
  int Compare(const char *other) const;       // byte order: <0, 0, >0
  int CompareNoCase(const char *other) const; // ASCII case folded

  // Loads string `id` from the string table of the current module state's resource handle
  // (see Resources.h). Returns FALSE and leaves the string empty when there is no such string.
  BOOL LoadString(UINT id);

  // Direct access to the bytes, for platform code that fills a string in place.
  std::string &bytes() { return text_; }
  const std::string &bytes() const { return text_; }

private:
  std::string text_;
};

CString operator+(const CString &left, const CString &right);
CString operator+(const CString &left, const char *right);
CString operator+(const char *left, const CString &right);
CString operator+(const CString &left, char right);
bool operator==(const CString &left, const CString &right);
bool operator==(const CString &left, const char *right);
bool operator!=(const CString &left, const CString &right);
bool operator!=(const CString &left, const char *right);

// ASCII-only helpers shared by the stand-ins.
char asciiToLower(char ch);
char asciiToUpper(char ch);
// Compares at most `count` bytes without regard to ASCII case, as _strnicmp does.
int asciiCompareNoCase(const char *left, const char *right, size_t count);
