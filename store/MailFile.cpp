// CMailFile: mapping a mailbox, framing it, and building its messages.
#include "store/MailFile.h"

#include "include/tuk/AgentLog.h"
#include "platform/FaultGuard.h"
#include "platform/FileStatus.h"
#include "store/ByteSearch.h"
#include "store/DelimiterScan.h"
#include "store/MailMsg.h"

#include <cstring>

AGENT_LOG_SOURCE(".\\MailFile");

int CMailFile::setDelimiter(const void *bytes, uint32_t length, uint32_t capacity) {
  MallocPtr<unsigned char> buffer(static_cast<unsigned char *>(std::malloc(capacity)));
  if (!buffer)
    return -1;
  std::memcpy(buffer.get(), bytes, length);
  std::memset(buffer.get() + length, 0, capacity - length);
  delimiter.reset(std::move(buffer), length);
  delimiterLength = length;
  return 0;
}

int CMailFile::setMailbox(const CString &name) {
  mailboxChanged();
  if (isOpen())
    unmapFile();
  if (name.IsEmpty())
    return 0;
  if (mapFile(name) < 0)
    return -1;
  fileName = name;
  msgOffset = 0;
  msgLength = 0;
  return 0;
}

int CMailFile::mapFile(const CString &name) {
  fileHandle.reset(CreateFileA(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!fileHandle.valid()) {
    AGENT_LOG("Failed opening %s: %d\n", name.GetString(), static_cast<int>(GetLastError()));
    mapBase.reset();
    return -1;
  }
  fileSize = GetFileSize(fileHandle.get(), nullptr);
  mappingHandle.reset(CreateFileMappingA(fileHandle.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
  if (!mappingHandle.valid()) {
    const DWORD error = GetLastError();
    fileHandle.reset();
    mapBase.reset();
    AGENT_LOG("Failed creating file mapping for file %s.  Error: %d", name.GetString(),
              static_cast<int>(error));
    return -1;
  }
  mapBase.reset(MapViewOfFile(mappingHandle.get(), FILE_MAP_READ, 0, 0, 0));
  if (!mapBase.get()) {
    mappingHandle.reset();
    fileHandle.reset();
    return -1;
  }
  return 0;
}

void CMailFile::unmapFile() {
  mapBase.reset();
  mappingHandle.reset();
  fileHandle.reset();
}

std::unique_ptr<CMailMsg> CMailFile::buildMessage(uint32_t offset, uint32_t length) {
  std::unique_ptr<CMailMsg> message = newMessage();
  if (message->init(mapBase.get() + offset, length, fileName) < 0)
    return nullptr;
  return message;
}

std::unique_ptr<CMailMsg> CMailFile::getMsgAt(uint32_t offset, uint32_t length) {
  // Taken without wrapping round: a record from a host may hold any two numbers.
  if (uint64_t{offset} + length > fileSize)
    return nullptr;
  msgOffset = offset;
  msgLength = length;
  return buildMessage(offset, length);
}

std::unique_ptr<CMailMsg> CMailFile::getMsgIn(const CString &name, uint32_t offset,
                                              uint32_t length) {
  if (!isOpen() || setMailbox(name) < 0)
    return nullptr;
  return getMsgAt(offset, length);
}

std::unique_ptr<CMailMsg> CMailFile::getNextMsg(uint32_t *offset, uint32_t *length) {
  if (!isOpen())
    return nullptr;
  int framed = -1;
  // A mailbox cut short under the scan ends like a mailbox with no further message.
  if (!runGuarded([&] { framed = nextMessage(); }) || framed < 0)
    return nullptr;
  // The walk fills a record from the message and drops it: its body is never copied.
  std::unique_ptr<CMailMsg> message = newMessage();
  if (message->initRecord(mapBase.get() + msgOffset, msgLength) < 0)
    return nullptr;
  *offset = msgOffset;
  *length = msgLength;
  return message;
}

int CMailFile::nextMessage() {
  msgOffset += msgLength;
  if (msgOffset == fileSize) {
    msgLength = 0;
    return -1;
  }
  return scanFrom(msgOffset);
}

int CMailFile::scanFrom(uint32_t offset) {
  const unsigned char *const base = mapBase.get();
  const unsigned char *const pattern = delimiter.get();
  const uint32_t patternLength = delimiterLength;
  if (patternLength == 0) {
    msgOffset = offset;
    msgLength = fileSize - offset;
    return 0;
  }
  // Look for two rare bytes of the delimiter together, not its first byte alone: Eudora's 'F'
  // stands every 64 bytes of a base64 attachment and Pegasus's line feed on every line, while
  // "?..@" and LF 0x1A hardly ever do. Only where both stand is the whole delimiter compared.
  // A delimiter counts only with at least one byte of the file behind it.
  const MessageFrame frame = frameMessage(
      base, fileSize, offset, patternLength, delimiter.pair(), [&](uint32_t pos, uint32_t &behind) {
        behind = pos + patternLength;
        return std::memcmp(base + pos, pattern, patternLength) == 0;
      });
  msgOffset = frame.offset;
  msgLength = frame.length;
  return 0;
}

int32_t fileStamp(const char *path) {
  CFileStatus status;
  if (!CFile::GetStatus(path, status))
    return 0;
  return status.m_mtime;
}
