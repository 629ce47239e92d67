// openObject, readObject, getObjectProperties and closeObject.
#include "host/OpenedObject.h"

#include <memory>

namespace {
constexpr size_t kReadChunk = 1 << 16;
constexpr size_t kFirstPropertyCapacity = 4096;
// The fields of a message come from its header block: far below this.
constexpr uint32_t kLargestPropertyBlock = 64u << 20;
} // namespace

OpenedObject::OpenedObject(const AgentEntryTable &entries, const ObjectRecord *record)
    : entries_(entries) {
  AgentHandle object = 0;
  int32_t time = -1;
  openStatus_ = entries_.openObject(&object, record, &time);
  if (openStatus_ == StatusOk) {
    object_ = object;
    time_ = time;
    open_ = true;
  }
}

OpenedObject::~OpenedObject() {
  if (open_)
    entries_.closeObject(object_);
}

bool OpenedObject::readBody(std::string &body) {
  if (!open_)
    return false;
  // Not zero-filled: only what readObject wrote is used.
  const std::unique_ptr<char[]> chunk(new char[kReadChunk]);
  for (;;) {
    uint32_t got = 0;
    const int32_t status =
        entries_.readObject(object_, chunk.get(), static_cast<uint32_t>(kReadChunk), &got);
    if (status == StatusEndOfData)
      return true;
    if (status != StatusOk || got > kReadChunk)
      return false;
    body.append(chunk.get(), got);
  }
}

bool OpenedObject::readFields(MessageFields &fields) {
  if (!open_)
    return false;
  if (properties_.size() < kFirstPropertyCapacity)
    properties_.resize(kFirstPropertyCapacity);
  uint32_t used = 0, count = 0;
  int32_t status = entries_.getObjectProperties(
      object_, properties_.data(), static_cast<uint32_t>(properties_.size()), &used, &count);
  if (status == StatusPropertiesTooLarge && used > properties_.size() &&
      used <= kLargestPropertyBlock) {
    properties_.resize(used);
    status = entries_.getObjectProperties(object_, properties_.data(),
                                          static_cast<uint32_t>(properties_.size()), &used, &count);
  }
  if (status != StatusOk || used > properties_.size())
    return false;
  return readPropertyBlock(properties_.data(), used, parsed_) &&
         fieldsOfProperties(parsed_, fields);
}
