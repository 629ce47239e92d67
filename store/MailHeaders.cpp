// Header and property names, their overrides, and the header field search.
#include "store/MailHeaders.h"

#include "cmn/Registry.h"
#include "include/tuk/AgentLog.h"
#include "resources/resource.h"
#include "store/ByteSearch.h"
#include "store/FieldSearch.h"

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
  int32_t index = -1;
  findFields(&name, 1, start, searchLength, &index);
  return index;
}

uint32_t fieldValueLength(int32_t index, const unsigned char *start, uint32_t headerLength) {
  if (index < 0 || static_cast<uint32_t>(index) >= headerLength)
    return 0;
  const auto from = static_cast<uint32_t>(index);
  return findLineEnd(start, from, headerLength) - from;
}

void extractField(CString &field, int32_t index, const unsigned char *start,
                  uint32_t headerLength) {
  field.Empty();
  const uint32_t length = fieldValueLength(index, start, headerLength);
  field.Append(reinterpret_cast<const char *>(start) + (length ? index : 0),
               static_cast<int>(length));
}
