// The encodings that MIME mail carries its text in, for the generated benchmark mail. They run
// once per pool of text, not per message, so they are written to be right rather than fast.
#pragma once

#include <string>

// Base64 of `bytes`, with no line breaks (an encoded word's inside).
void encodeBase64(std::string &out, const std::string &bytes);
// Base64 of `bytes` in lines of 76 characters, the last one possibly shorter, each ended by
// `eol`. Bytes in multiples of 57 give whole lines, so pieces encoded apart join up.
void encodeBase64Lines(std::string &out, const std::string &bytes, const std::string &eol);

// One line of text as quoted-printable, ended by `eol`: 8-bit bytes and '=' escaped, white
// space at its end escaped, soft line breaks ("=" and `eol`) keeping every line within 76
// characters, and a "From " at a line's start escaped as mail programs do against mailbox
// writers.
void encodeQuotedPrintableLine(std::string &out, const std::string &line, const std::string &eol);

enum class WordEncoding { Utf8Base64, Utf8Q, Latin1Q };
// `utf8` as encoded words of at most 75 characters each, a multibyte character never split
// between two; `fold` goes between them (a line end and white space, to fold the field).
// Latin1Q needs text that ISO-8859-1 holds (see fitsLatin1).
void encodeWords(std::string &out, const std::string &utf8, WordEncoding encoding,
                 const std::string &fold);

// `utf8` in an extended parameter value: the bytes beyond the attribute characters as %XX.
void encodePercent(std::string &out, const std::string &utf8);

// `utf8` in ISO-8859-1, or in windows-1252 with its typographic quotes, dashes and euro sign;
// what the set lacks becomes an ASCII look-alike.
std::string toSingleByte(const std::string &utf8, bool windows1252);
// Whether ISO-8859-1 holds every character of `utf8`.
bool fitsLatin1(const std::string &utf8);
