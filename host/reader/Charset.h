// Text of any charset to UTF-8. Every function appends valid UTF-8, whatever its input holds.
#pragma once

#include "platform/Unicode.h" // appendUtf8 of one code point

#include <cstdint>
#include <string>
#include <string_view>

// `bytes` in `charset` (a MIME name such as "iso-8859-1"; empty when none is declared).
// Undeclared, US-ASCII, UTF-8 and unknown charsets: valid UTF-8 stays as it is and any other
// byte is read as Windows-1252, which mail without a declaration (or with a wrong one) mostly
// is. In any other charset a byte sequence the charset does not allow becomes U+FFFD.
void appendUtf8(std::string_view bytes, std::string_view charset, std::string &out);

// `bytes` as UTF-8 where they are, and each byte outside a valid sequence as Windows-1252.
void appendUtf8OrWindows1252(std::string_view bytes, std::string &out);

// The ASCII control characters of `text` (line ends too) as blanks: for a value on one line.
void blankControlCharacters(std::string &text);

// The code point that a byte of Windows-1252 stands for; its five holes are read as the C1
// controls of Latin-1.
uint32_t windows1252CodePoint(unsigned char byte);

// The length of the longest prefix of `bytes` that is valid UTF-8.
size_t validUtf8Prefix(std::string_view bytes);
