// An agent brought up in the test process.
#include "tests/support/AgentSession.h"

#include <cstring>
#include <gtest/gtest.h>

AgentSession::AgentSession(const std::string &agentKey, const std::string &language, LogSink sink) {
  const AgentParams params = {agentKey.c_str(), sink, language.c_str(), 0, 0, 0};
  EXPECT_EQ(0, initAgent(&params, &result_));
}

AgentSession::~AgentSession() {
  if (result_.entryTable)
    result_.entryTable->terminateAgent();
}

RecordBuffer::RecordBuffer(size_t capacity) : bytes_(capacity, '\0') {
  get()->size = static_cast<uint32_t>(capacity);
}

RecordBuffer::RecordBuffer(const std::string &path, uint32_t offset, uint32_t length,
                           uint32_t checksum, int32_t stamp)
    : bytes_(offsetof(ObjectRecord, path) + path.size() + 1, '\0') {
  ObjectRecord *record = get();
  record->size = static_cast<uint32_t>(path.size() + 18);
  record->checksum = checksum;
  record->offset = offset;
  record->length = length;
  record->mailboxStamp = stamp;
  std::memcpy(record->path, path.c_str(), path.size() + 1);
}
