// CMailMsg::getProperties: the property block of a message; and the table of property names.
#include "store/MailProps.h"

#include "cmn/Acdr.h"
#include "include/tuk/AgentAbi.h"
#include "store/MailHeaders.h"
#include "store/MailMsg.h"

#include <cstring>

namespace {

enum : unsigned long { kTextType = 1, kTitleType = 2 };

// The seven names in their fixed order.
const CString *const propertyNames[kPropertyCount] = {
    &propSubject, &propTitle, &propLocation, &propTo, &propFrom, &propCc, &propAuthor};

// The pointers of the name table are the build's: 28 bytes on the 32-bit interface.
static_assert(sizeof(void *) != 4 || kPropertyCount * sizeof(char *) == 28, "32-bit name table");

} // namespace

int32_t CMailMsg::getProperties(unsigned char *buffer, uint32_t size, uint32_t *used,
                                uint32_t *count) const {
  const CString *const values[kPropertyCount] = {&subject, &subject, &mailbox, &to,
                                                 &from,    &cc,      &from};
  const unsigned long types[kPropertyCount] = {kTextType, kTitleType, kTitleType, kTextType,
                                               kTextType, kTextType,  kTextType};
  ACDR cdr(buffer, size, 0, 1, 0);
  cdr << static_cast<long>(kPropertyCount);
  for (int i = 0; i < kPropertyCount; ++i)
    cdr << *propertyNames[i] << *values[i] << types[i];
  *used = cdr.getUsed();
  if (*used > size)
    return StatusPropertiesTooLarge;
  *count = kPropertyCount;
  return StatusOk;
}

int32_t getPropertyNames(void *buffer, uint32_t size, uint32_t *used, uint32_t *count) {
  uint32_t needed = kPropertyCount * sizeof(char *);
  for (const CString *name : propertyNames)
    needed += static_cast<uint32_t>(name->GetLength()) + 1;
  *used = needed;
  if (needed > size)
    return StatusBufferTooSmall;

  // The pointers point into the same block, at the build's pointer width.
  char *const block = static_cast<char *>(buffer);
  char *names = block + kPropertyCount * sizeof(char *);
  for (int i = 0; i < kPropertyCount; ++i) {
    const size_t bytes = static_cast<size_t>(propertyNames[i]->GetLength()) + 1;
    std::memcpy(names, propertyNames[i]->GetString(), bytes);
    std::memcpy(block + i * sizeof(char *), &names, sizeof names);
    names += bytes;
  }
  *count = kPropertyCount;
  return StatusOk;
}
