// A host's calls on the find and object entries: one find call, a whole walk that takes every
// status the agent documents, the walk of a store that must go well, and a record reopened.
#pragma once

#include "include/tuk/AgentAbi.h"

#include <string>
#include <vector>

// A record as a host keeps it, with the time its find call gave and, once read, its body.
struct KeptRecord {
  std::string path;
  uint32_t offset = 0, length = 0, checksum = 0;
  int32_t stamp = 0, time = 0;
  std::string body;
};

// How a walk of the whole store ended, and what it found.
struct StoreWalk {
  std::vector<KeptRecord> records;
  int32_t firstStatus = -1; // of findFirstObjectHandle
  int32_t lastStatus = -1;  // of the last find call
};

// One find call, offering room enough for any record; on 0, `record` holds what it gave.
int32_t findFirst(const AgentEntryTable &entries, AgentHandle &search, KeptRecord &record);
int32_t findNext(const AgentEntryTable &entries, AgentHandle search, KeptRecord &record);
// The whole walk, at most `limit` records, closing the search when one was open.
StoreWalk walkRecords(const AgentEntryTable &entries, size_t limit = 1000000);
// Opens the record; the status of openObject, which gives `object` on 0.
int32_t openRecord(const AgentEntryTable &entries, const KeptRecord &record, AgentHandle &object);
// Reads an open object's body to the end, then closes it.
std::string readAndClose(const AgentEntryTable &entries, AgentHandle object);
// Opens the record and reads its body to the end; the status of openObject.
int32_t reopen(const AgentEntryTable &entries, const KeptRecord &record,
               std::string *body = nullptr);
// The walk of a store that must go well: 0 on every find call until 18, and every record
// opened again, its body read.
std::vector<KeptRecord> walkStore(const AgentEntryTable &entries);
