// A host's calls on the find and object entries.
#include "tests/support/HostWalk.h"

#include "tests/support/AgentSession.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {
int32_t find(const AgentEntryTable &e, bool first, AgentHandle &search, KeptRecord &record) {
  RecordBuffer buffer;
  int32_t time = 0;
  const int32_t status = first ? e.findFirstObjectHandle(0, &search, buffer.get(), &time)
                               : e.findNextObjectHandle(search, buffer.get(), &time);
  if (status == StatusOk) {
    const ObjectRecord *r = buffer.get();
    EXPECT_EQ(std::strlen(r->path) + 18, r->size); // what a filled record reports
    record = {r->path, r->offset, r->length, r->checksum, r->mailboxStamp, time, ""};
  }
  return status;
}
} // namespace

int32_t findFirst(const AgentEntryTable &e, AgentHandle &search, KeptRecord &record) {
  return find(e, true, search, record);
}

int32_t findNext(const AgentEntryTable &e, AgentHandle search, KeptRecord &record) {
  return find(e, false, search, record);
}

StoreWalk walkRecords(const AgentEntryTable &e, size_t limit) {
  StoreWalk result;
  AgentHandle search = 0;
  KeptRecord record;
  result.firstStatus = result.lastStatus = findFirst(e, search, record);
  if (result.firstStatus != StatusOk)
    return result;
  result.records.push_back(record);
  while (result.records.size() < limit &&
         (result.lastStatus = findNext(e, search, record)) == StatusOk)
    result.records.push_back(record);
  EXPECT_EQ(StatusOk, e.closeFindObjectHandle(search));
  return result;
}

int32_t openRecord(const AgentEntryTable &e, const KeptRecord &record, AgentHandle &object) {
  RecordBuffer buffer(record.path, record.offset, record.length, record.checksum, record.stamp);
  int32_t time = 0;
  return e.openObject(&object, buffer.get(), &time);
}

std::string readAndClose(const AgentEntryTable &e, AgentHandle object) {
  std::string body;
  char piece[4096];
  uint32_t got = 0;
  while (e.readObject(object, piece, sizeof piece, &got) == StatusOk)
    body.append(piece, got);
  EXPECT_EQ(StatusOk, e.closeObject(object));
  return body;
}

int32_t reopen(const AgentEntryTable &e, const KeptRecord &record, std::string *body) {
  AgentHandle object = 0;
  const int32_t status = openRecord(e, record, object);
  if (status == StatusOk) {
    const std::string read = readAndClose(e, object);
    if (body)
      *body += read;
  }
  return status;
}

std::vector<KeptRecord> walkStore(const AgentEntryTable &e) {
  StoreWalk walk = walkRecords(e);
  EXPECT_EQ(walk.records.empty() ? StatusNoMoreObjects : StatusOk, walk.firstStatus);
  EXPECT_EQ(StatusNoMoreObjects, walk.lastStatus);
  for (KeptRecord &record : walk.records)
    EXPECT_EQ(StatusOk, reopen(e, record, &record.body)) << record.path;
  return walk.records;
}
