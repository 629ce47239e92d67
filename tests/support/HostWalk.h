// A host's whole walk of a store through the entries: find first, find next until 18, and
// every record opened again and read to its end.
#pragma once

#include "agent/AgentAbi.h"

#include <string>
#include <vector>

struct FoundObject {
  std::string path;
  uint32_t offset, length, checksum;
  int32_t time;
  std::string body;  // read back through openObject and readObject
};

// Fails the test on any status but 0 and a final 18; closes the search when it had objects.
std::vector<FoundObject> walkStore(const AgentEntryTable &entries);
// Opens a record and reads its body to the end.
std::string reopenBody(const AgentEntryTable &entries, const ObjectRecord *record);
