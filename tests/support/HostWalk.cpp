// A host's whole walk of a store through the entries.
#include "tests/support/HostWalk.h"

#include "tests/support/AgentSession.h"

#include <gtest/gtest.h>

#include <cstring>

std::string reopenBody(const AgentEntryTable &e, const ObjectRecord *record) {
  AgentHandle object = 0;
  int32_t time = 0;
  EXPECT_EQ(StatusOk, e.openObject(&object, record, &time)) << record->path;
  std::string body;
  char buffer[4096];
  uint32_t got = 0;
  while (e.readObject(object, buffer, sizeof buffer, &got) == StatusOk)
    body.append(buffer, got);
  e.closeObject(object);
  return body;
}

std::vector<FoundObject> walkStore(const AgentEntryTable &e) {
  std::vector<FoundObject> found;
  RecordBuffer record;
  AgentHandle search = 0;
  int32_t time = 0;
  int32_t status = e.findFirstObjectHandle(0, &search, record.get(), &time);
  while (status == StatusOk) {
    const ObjectRecord *r = record.get();
    EXPECT_EQ(std::strlen(r->path) + 18, r->size);
    found.push_back({r->path, r->offset, r->length, r->checksum, time, reopenBody(e, r)});
    record->size = static_cast<uint32_t>(record.capacity());  // the capacity, offered anew
    status = e.findNextObjectHandle(search, record.get(), &time);
  }
  EXPECT_EQ(StatusNoMoreObjects, status);
  if (!found.empty()) {
    EXPECT_EQ(StatusNoMoreObjects, e.findNextObjectHandle(search, record.get(), &time));
    EXPECT_EQ(StatusOk, e.closeFindObjectHandle(search));
  }
  return found;
}
