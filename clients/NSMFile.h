// CNetscapeMailFile, CNetscapeMailMsg and CNetscapeMailIndex: the Netscape store, where a
// message starts behind a line that the delimiter format reads whole.
#pragma once

#include "clients/ClientMailFile.h"
#include "store/MailInd.h"

class CNetscapeMailMsg : public CMailMsg {};

class CNetscapeMailFile : public CClientMailFile<CNetscapeMailMsg> {
public:
  int init(const CString &path) override;
  int nextMessage() override;

protected:
  void mailboxChanged() override;

private:
  // The first line feed at or after `from`, or fileSize when there is none.
  uint32_t findLineFeed(uint32_t from);
  // Whether the line from `pos` through the line feed at `lineFeed` is a delimiter line.
  bool isDelimiterLine(uint32_t pos, uint32_t lineFeed);

  // The last line-feed search: no line feed lies in [searchedFrom_, lineFeedAt_). The scan
  // only moves forward, so with this every byte is searched once.
  uint32_t searchedFrom_ = 0;
  uint32_t lineFeedAt_ = 0;
  // The last line read as a delimiter line: the one that ends a message starts the next, and
  // is parsed once for both.
  uint32_t delimiterLineAt_ = kNoDelimiterLine;
  static constexpr uint32_t kNoDelimiterLine = UINT32_MAX;
};

class CNetscapeMailIndex : public CClientMailIndex<CNetscapeMailFile> {};
