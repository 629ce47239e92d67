// The byte patterns that cut each client's mail files into messages.
#pragma once

#include <cstdint>

// Literal question marks; no terminator belongs to it.
constexpr unsigned char kEudoraDelimiter[12] = {'F', 'r', 'o', 'm', ' ', '?',
                                                '?', '?', '@', '?', '?', '?'};
// Holds zero bytes: a counted sequence, never a C string.
constexpr unsigned char kInternetMailDelimiter[4] = {0x00, 0x7F, 0x00, 0x7F};
// Two line feeds and the character 26.
constexpr unsigned char kPegasusDelimiter[3] = {0x0A, 0x0A, 0x1A};
constexpr uint32_t kPegasusFileHeaderSize = 128;

// A delimiter line is one this format reads whole: three words, a number, a time, a number.
// Its first four bytes are compared with the file and its last counted byte is the line feed
// that ends the line.
constexpr char kNetscapeDelimiterText[] = "From %s %s %s %d %d:%d:%d %d\n";
// The buffer holds the format with its terminator; the delimiter's length counts the line
// feed and not the terminator.
constexpr uint32_t kNetscapeDelimiterBuffer = sizeof kNetscapeDelimiterText;
constexpr uint32_t kNetscapeDelimiterLength = kNetscapeDelimiterBuffer - 1;
