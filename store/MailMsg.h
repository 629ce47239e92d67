// CMailMsg: one message lifted out of a mailbox's bytes.
//
// Built from a byte range, it computes the range's checksum, finds the end of the header
// block, keeps five header values and its own copy of the body. After that it needs the
// mailbox no more: a pointer to it is the host's object handle and the body is the stream the
// host reads.
#pragma once

#include "platform/CString.h"
#include "platform/Object.h"
#include "store/MallocPtr.h"

#include <cstdint>

constexpr uint32_t kMessageSignature = 0xDEADBEEF;

class CMailMsg : public CObject {
public:
  CMailMsg() = default;
  ~CMailMsg() override = default;
  CMailMsg(const CMailMsg &) = delete;
  CMailMsg &operator=(const CMailMsg &) = delete;

  // Builds the message from `length` bytes at `start`. 0, or -1 when the body can't be
  // allocated or the bytes became unreadable (the mailbox was cut short under its mapping).
  int init(const unsigned char *start, uint32_t length, const CString &mailboxPath);
  // Builds what a walk's record needs and no more: the checksum and the date, and while the
  // log is on the subject it shows; no body, no other field. 0, or -1 when the bytes became
  // unreadable.
  int initRecord(const unsigned char *start, uint32_t length);

  // Writes the message's property block for the host (see getProperties in MailProps).
  // 0, or -11 when it does not fit `size`; `used` is stored either way.
  virtual int32_t getProperties(unsigned char *buffer, uint32_t size, uint32_t *used,
                                uint32_t *count) const;
  // Length of the header block: up to and including the first blank line, else `length`.
  virtual uint32_t getHeaderLength(const unsigned char *start, uint32_t length) const;

  // The body as a stream: 0, or -9 when no byte can be delivered (a short read is a success).
  int32_t read(void *destination, uint32_t count, uint32_t *countRead);
  // 0, or -8 when the target lies outside the body (position unchanged).
  int32_t seek(int32_t origin, int32_t offset);
  int32_t tell(uint32_t *position) const;

  uint32_t getChecksum() const { return checksum; }
  // 1 if `sum` is this message's checksum, else 0 (and a log line).
  int verifyChecksum(const uint32_t &sum) const;
  // The date for mktime: day, month from 0, years since 1900, hour, minute, second. A message
  // without a readable date gives 1 February 1971, 00:00:00.
  void getDateFields(int32_t *day, int32_t *month, int32_t *year, int32_t *hour, int32_t *minute,
                     int32_t *second) const;

  void getTo(CString &out) const { out = to; }
  void getFrom(CString &out) const { out = from; }
  void getCc(CString &out) const { out = cc; }
  void getDate(CString &out) const { out = date; }
  void getSubject(CString &out) const { out = subject; }
  void getMailbox(CString &out) const { out = mailbox; }
  // The body up to its first zero byte; empty when there is no body.
  void getBody(CString &out) const;

  // The XOR of the range's bytes, byte i at shift 8 * (i mod 4); 0 for an empty range.
  static uint32_t computeChecksum(const unsigned char *start, uint32_t length);

  uint32_t signature = kMessageSignature;
  uint32_t bodyLength = 0;
  uint32_t checksum = 0;
  uint32_t position = 0;
  int32_t initialised = 0;
  CString to;
  CString from;
  CString cc;
  CString date;
  CString subject;
  CString mailbox;
  MallocPtr<unsigned char> body; // bodyLength bytes and a zero, or null for an empty body

private:
  // init without `mailboxPath` is initRecord.
  int build(const unsigned char *start, uint32_t length, const CString *mailboxPath);
};
