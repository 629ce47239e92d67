// Header and property names, their overrides, and the header field search.
#include "store/MailHeaders.h"

#include "agent/Log.h"
#include "cmn/Registry.h"
#include "resources/resource.h"

#include <cstring>

AGENT_LOG_SOURCE(".\\MailMsg");

CString propSubject;
CString propTitle;
CString propLocation;
CString propAuthor;
CString propTo;
CString propFrom;
CString propCc;
CString hdrSubject;
CString hdrDate;
CString hdrTo;
CString hdrFrom;
CString hdrCc;

namespace {

struct HeaderOverride {
  const char *valueName;
  CString *name;
  const char *logLine;
};

} // namespace

void loadStatics(const CString &language, const char *agentKey) {
  propSubject.LoadString(IDS_PROP_SUBJECT);
  propTitle.LoadString(IDS_PROP_TITLE);
  propLocation.LoadString(IDS_PROP_LOCATION);
  propAuthor.LoadString(IDS_PROP_AUTHOR);
  propTo.LoadString(IDS_PROP_TO);
  propFrom.LoadString(IDS_PROP_FROM);
  propCc.LoadString(IDS_PROP_CC);
  hdrSubject.LoadString(IDS_HDR_SUBJECT);
  hdrDate.LoadString(IDS_HDR_DATE);
  hdrTo.LoadString(IDS_HDR_TO);
  hdrFrom.LoadString(IDS_HDR_FROM);
  hdrCc.LoadString(IDS_HDR_CC);

  const CString key = CString(agentKey) + "\\" + language;
  AGENT_LOG("Key: %s", key.GetString());
  const HeaderOverride overrides[] = {
      {"Subject", &hdrSubject, "Overriding subject value with: %s"},
      {"Date", &hdrDate, "Overriding date value with: %s"},
      {"To", &hdrTo, "Overriding to value with: %s"},
      {"From", &hdrFrom, "Overriding from value with: %s"},
      {"Cc", &hdrCc, "Overriding cc value with: %s"},
  };
  for (const HeaderOverride &entry : overrides) {
    CString text;
    if (GetRegValue(key, entry.valueName, text) == 1) {
      AGENT_LOG(entry.logLine, text.GetString());
      *entry.name = CString('\n') + text;
    }
  }
}

int32_t findField(const char *name, const unsigned char *start, uint32_t searchLength) {
  const size_t nameLength = std::strlen(name);
  if (searchLength == 0 || nameLength > searchLength)
    return -1;
  const uint32_t lastStart = searchLength - static_cast<uint32_t>(nameLength);
  const char first = name[0];
  const bool caseless = asciiToLower(first) == asciiToUpper(first);
  for (uint32_t i = 0; i <= lastStart; ++i) {
    // Find the name's first byte with a library search where case plays no part; the names
    // start with a line feed, so this is the usual road.
    if (caseless) {
      const void *hit = std::memchr(start + i, first, lastStart - i + 1);
      if (hit == nullptr)
        return -1;
      i = static_cast<uint32_t>(static_cast<const unsigned char *>(hit) - start);
    } else if (asciiToLower(static_cast<char>(start[i])) != asciiToLower(first)) {
      continue;
    }
    if (asciiCompareNoCase(reinterpret_cast<const char *>(start + i), name, nameLength) == 0)
      return static_cast<int32_t>(i + nameLength + 1);
  }
  return -1;
}

uint32_t fieldValueLength(int32_t index, const unsigned char *start, uint32_t headerLength) {
  if (index < 0 || static_cast<uint32_t>(index) >= headerLength)
    return 0;
  uint32_t end = static_cast<uint32_t>(index);
  while (end < headerLength && start[end] != '\r' && start[end] != '\n')
    ++end;
  return end - static_cast<uint32_t>(index);
}

void extractField(CString &field, int32_t index, const unsigned char *start, uint32_t headerLength) {
  field.Empty();
  const uint32_t length = fieldValueLength(index, start, headerLength);
  field.Append(reinterpret_cast<const char *>(start) + (length ? index : 0), static_cast<int>(length));
}
