// ObjectRecord storage.
#include "host/RecordBuffer.h"

#include <cstring>

RecordBuffer::RecordBuffer(size_t capacity) {
  reserve(capacity);
}

void RecordBuffer::reserve(size_t capacity) {
  if (capacity < offsetof(ObjectRecord, path) + 1)
    capacity = offsetof(ObjectRecord, path) + 1;
  if (capacity <= capacity_)
    return;
  words_.resize((capacity + 3) / 4, 0);
  capacity_ = capacity;
}

void RecordBuffer::offerCapacity() {
  get()->size = static_cast<uint32_t>(capacity_);
}

bool RecordBuffer::assign(const void *bytes, size_t size) {
  const size_t fixed = offsetof(ObjectRecord, path);
  if (bytes == nullptr || size < fixed + 1)
    return false;
  const auto *text = static_cast<const char *>(bytes) + fixed;
  if (text[size - fixed - 1] != '\0' || std::strlen(text) != size - fixed - 1)
    return false;
  reserve(size);
  std::memset(words_.data(), 0, words_.size() * 4);
  std::memcpy(words_.data(), bytes, size);
  return true;
}

std::string RecordBuffer::path() const {
  const size_t room = capacity_ - offsetof(ObjectRecord, path);
  const char *text = get()->path;
  return std::string(text, strnlen(text, room));
}
