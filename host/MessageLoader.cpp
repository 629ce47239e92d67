// The agent's object, the header block around it, and the reader.
#include "host/MessageLoader.h"

#include "host/Clients.h"
#include "host/OpenedObject.h"
#include "host/reader/MailDates.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>

Framing framingOfKey(const std::string &agentKey) {
  const ClientInfo *const client = clientOfKey(agentKey);
  if (client != nullptr && std::strcmp(client->name, "eudora") == 0)
    return Framing::EudoraLine;
  if (client != nullptr && std::strcmp(client->name, "netscape") == 0)
    return Framing::NetscapeLine;
  return Framing::Plain;
}

bool MessageLoader::readFrame(const ObjectRecord *record, size_t bodyLength,
                              std::string &headerBlock, std::string &delimiterLine) {
  if (bodyLength > record->length || !file_.readAt(record->offset, record->length, range_))
    return false;
  headerBlock.assign(range_, 0, record->length - bodyLength);
  delimiterLine.clear();
  if (framing_ == Framing::EudoraLine && record->offset > 0) {
    // The range starts behind "From ???@???", on the rest of its line; only what stands
    // ahead of a file's first delimiter starts at 0.
    const size_t lineEnd = headerBlock.find('\n');
    const size_t taken = lineEnd == std::string::npos ? headerBlock.size() : lineEnd + 1;
    delimiterLine = headerBlock.substr(0, taken);
    headerBlock.erase(0, taken);
  } else {
    readLineAhead(record, delimiterLine);
  }
  return true;
}

void MessageLoader::readLineAhead(const ObjectRecord *record, std::string &line) {
  line.clear();
  if (framing_ == Framing::NetscapeLine)
    file_.readLineAhead(record->offset, line);
}

bool MessageLoader::hashOf(const RecordBuffer &record, RangeHash &hash) {
  if (!file_.open(record.path()) || !file_.readAt(record->offset, record->length, range_))
    return false;
  hash.bytes = hashOfBytes(std::string(), range_);
  std::string line;
  readLineAhead(record.get(), line);
  hash.withLine = line.empty() ? hash.bytes : hashOfBytes(line, range_);
  return true;
}

bool MessageLoader::load(const RecordBuffer &record, LoadedMessage &loaded) {
  loaded.body.clear();
  openStatus_ = 0;
  FileState before, after;
  if (!file_.open(record.path()) || !file_.state(before))
    return false;
  std::string headerBlock, delimiterLine;
  {
    OpenedObject object(entries_, record.get());
    openStatus_ = object.openStatus();
    if (!object.isOpen() || !object.readBody(loaded.body))
      return false;
    loaded.agentTime = object.time();
  }
  if (!readFrame(record.get(), loaded.body.size(), headerBlock, delimiterLine) ||
      !file_.state(after) || !(before == after))
    return false;
  readMessage(headerBlock, loaded.body, loaded.message);
  ReadMessage &message = loaded.message;
  const bool dateFromLine = !message.hasDate && parseDelimiterDate(delimiterLine, message.date);
  message.hasDate = message.hasDate || dateFromLine;
  // A date taken from Netscape's line ahead of the range makes that line part of the message.
  loaded.hash = hashOfBytes(
      dateFromLine && framing_ == Framing::NetscapeLine ? delimiterLine : std::string(), range_);
  return true;
}

std::string &searchedText(ReadMessage &message) {
  std::string &text = message.text;
  if (!message.attachmentText.empty())
    text.append("\n").append(message.attachmentText);
  // Zero bytes end a C string: in the stored text they are blanks. Text rarely holds one,
  // and the library's search passes over the rest far faster than a loop byte by byte.
  char *const end = &text[0] + text.size();
  for (char *zero = &text[0];
       (zero = static_cast<char *>(std::memchr(zero, '\0', static_cast<size_t>(end - zero))));)
    *zero++ = ' ';
  return text;
}

std::string attachmentNames(const ReadMessage &message) {
  std::string names;
  for (const MailAttachment &attachment : message.attachments)
    names += (names.empty() ? "" : "\n") + attachment.name;
  return names;
}

StoredRead readStoredMessage(MailboxFile &file, Framing framing, const StoredPlace &place,
                             ReadMessage &message) {
  std::string range, line;
  if (!file.open(place.path) || !file.readAt(place.offset, place.length, range))
    return StoredRead::Unreadable;
  // The delimiter line is read only for a message whose hash holds it (dated by that line).
  if (hashOfBytes(std::string(), range) != place.hash) {
    if (framing == Framing::NetscapeLine)
      file.readLineAhead(place.offset, line);
    if (line.empty() || hashOfBytes(line, range) != place.hash)
      return StoredRead::Changed;
  }
  std::string_view bytes(range);
  if (framing == Framing::EudoraLine && place.offset > 0)
    bytes.remove_prefix(std::min(bytes.size(), bytes.find('\n') + 1)); // the delimiter's rest
  // The header block ends with the first empty line, which it keeps.
  size_t headerEnd = bytes.size();
  for (size_t at = bytes.find('\n'); at != std::string_view::npos; at = bytes.find('\n', at + 1)) {
    const size_t next = at + 1;
    if (next < bytes.size() &&
        (bytes[next] == '\n' ||
         (bytes[next] == '\r' && next + 1 < bytes.size() && bytes[next + 1] == '\n'))) {
      headerEnd = next + (bytes[next] == '\n' ? 1 : 2);
      break;
    }
  }
  readMessage(bytes.substr(0, headerEnd), bytes.substr(headerEnd), message);
  return StoredRead::Read;
}
