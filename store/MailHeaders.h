// The process-wide header and property names, and the search for a header field.
//
// The names come from the string table (a language module's when one is loaded); registry
// values under agentKey\language may replace the five header names.
#pragma once

#include "platform/CString.h"

#include <cstdint>

extern CString propSubject;
extern CString propTitle;
extern CString propLocation;
extern CString propAuthor;
extern CString propTo;
extern CString propFrom;
extern CString propCc;
extern CString hdrSubject; // "\nSubject:"
extern CString hdrDate;
extern CString hdrTo;
extern CString hdrFrom;
extern CString hdrCc;

// Loads the twelve names, then the header name overrides under agentKey\language.
void loadStatics(const CString &language, const char *agentKey);

// Index one byte behind the first case-blind match of `name` that lies wholly inside the
// `searchLength` bytes at `start` (the byte after the colon is skipped), or -1.
int32_t findField(const char *name, const unsigned char *start, uint32_t searchLength);
// The number of bytes of the value at `index`: up to a CR, an LF or `headerLength`.
uint32_t fieldValueLength(int32_t index, const unsigned char *start, uint32_t headerLength);
// Makes `field` the value at `index`: empty when `index` is not below `headerLength`.
void extractField(CString &field, int32_t index, const unsigned char *start, uint32_t headerLength);
