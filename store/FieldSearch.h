// The header field search for several names in one pass over a header block.
#pragma once

#include <cstdint>

// For each of the `count` names, what findField (MailHeaders.h) gives for it over the
// `searchLength` bytes at `start`: one byte behind the first case-blind match that lies wholly
// inside them, or -1. Where the names start with the same byte and that byte has no case (the
// line feed in front of every header name), the block is searched once for all of them.
void findFields(const char *const names[], int count, const unsigned char *start,
                uint32_t searchLength, int32_t indexes[]);
