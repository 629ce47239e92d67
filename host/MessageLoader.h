// A message as the host reads it: the body from the agent's stream, the top-level header
// block and the client's delimiter line from the mailbox file with pread, and the two read
// together as a person reads them.
//
// The agent gives the body and a record's range; the header block is the range less the
// body, and a hash of the range tells the message's bytes from any others. Eudora's range starts
// with the rest of its delimiter line, Netscape's delimiter line lies just ahead of the range. The
// file is read with pread, never mapped, so a file cut short under the host is a failed read and
// not a fault; a mailbox whose size or times change while a message is read makes that message
// unreadable for this run.
#pragma once

#include "host/MailboxFile.h"
#include "host/RecordBuffer.h"
#include "host/reader/MailReader.h"
#include "include/tuk/AgentAbi.h"

#include <cstdint>
#include <string>

enum class Framing { Plain, EudoraLine, NetscapeLine };

// Strong hashes of a message's bytes: of the record's range, and of the range with the
// delimiter line ahead of it (Netscape's; the same as `bytes` for the other clients). A
// message whose date comes from that line is known by the second: the line is then part of
// what is indexed.
struct RangeHash {
  uint64_t bytes = 0, withLine = 0;
  bool matches(uint64_t stored) const { return stored == bytes || stored == withLine; }
};

// The framing of the client that `agentKey` selects.
Framing framingOfKey(const std::string &agentKey);

struct LoadedMessage {
  std::string body; // as the agent's stream gives it
  int32_t agentTime = -1;
  uint64_t hash = 0;   // one of the two of RangeHash: with the line only for a date it gave
  ReadMessage message; // its date falls back on the delimiter line's
};

class MessageLoader {
public:
  MessageLoader(const AgentEntryTable &entries, Framing framing)
      : entries_(entries), framing_(framing) {}
  MessageLoader(const MessageLoader &) = delete;
  MessageLoader &operator=(const MessageLoader &) = delete;

  // False when the object does not open (openStatus() says why), a read fails or the mailbox
  // changed meanwhile.
  bool load(const RecordBuffer &record, LoadedMessage &loaded);
  // A strong hash of the bytes of the record's range as they stand now: the agent's checksum,
  // an XOR of words, keeps its value through edits that cancel out. False when the range
  // can't be read.
  bool hashOf(const RecordBuffer &record, RangeHash &hash);
  int32_t openStatus() const { return openStatus_; }

private:
  bool readFrame(const ObjectRecord *record, size_t bodyLength, std::string &headerBlock,
                 std::string &delimiterLine);
  void readLineAhead(const ObjectRecord *record, std::string &line);

  const AgentEntryTable &entries_;
  const Framing framing_;
  int32_t openStatus_ = 0;
  MailboxFile file_;
  std::string range_; // the bytes of the last range read
};

// The text a message is searched by: its text and its text attachments', in place.
std::string &searchedText(ReadMessage &message);
// Its attachments' names, one a line: searched as `attachment`.
std::string attachmentNames(const ReadMessage &message);

// Where an indexed message was, and the hash its bytes had.
struct StoredPlace {
  std::string path;
  uint32_t offset = 0, length = 0;
  uint64_t hash = 0;
};

enum class StoredRead { Read, Changed, Unreadable };

// An indexed message read again from its mailbox file, without the agent, as the reader
// reads it: for a hit's snippet. Changed when the bytes at its place are others now (its
// mailbox was written since it was indexed).
StoredRead readStoredMessage(MailboxFile &file, Framing framing, const StoredPlace &place,
                             ReadMessage &message);
