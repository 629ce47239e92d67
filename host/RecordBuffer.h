// A buffer for one ObjectRecord: aligned storage with a capacity, the bytes a host stores,
// and a record rebuilt from stored bytes.
#pragma once

#include "include/tuk/AgentAbi.h"

#include <cstddef>
#include <string>
#include <vector>

class RecordBuffer {
public:
  // Room for a path of PATH_MAX bytes: the find calls rarely ask for more.
  static constexpr size_t kDefaultCapacity = 4096 + offsetof(ObjectRecord, path) + 1;

  explicit RecordBuffer(size_t capacity = kDefaultCapacity);

  // A record from stored bytes: false when they are no record (too short, or the path does
  // not end with the last byte).
  bool assign(const void *bytes, size_t size);

  ObjectRecord *get() { return reinterpret_cast<ObjectRecord *>(words_.data()); }
  const ObjectRecord *get() const { return reinterpret_cast<const ObjectRecord *>(words_.data()); }
  ObjectRecord *operator->() { return get(); }
  const ObjectRecord *operator->() const { return get(); }
  size_t capacity() const { return capacity_; }

  // Sets `size` to the capacity, as every find call wants it.
  void offerCapacity();
  // Grows to at least `capacity` bytes; the content is kept.
  void reserve(size_t capacity);

  // The path, read no further than the capacity.
  std::string path() const;
  // The bytes of a filled record: the fixed fields, the path and its zero.
  const unsigned char *bytes() const { return reinterpret_cast<const unsigned char *>(get()); }
  size_t filledSize() const { return offsetof(ObjectRecord, path) + path().size() + 1; }

private:
  std::vector<uint32_t> words_; // uint32_t keeps the record's fields aligned
  size_t capacity_ = 0;
};
