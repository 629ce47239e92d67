// The benchmark's host: dlopen, initAgent, then the find, object and property entries.
#include "bench/AgentDriver.h"

#include "include/tuk/AgentAbi.h"

#include <cstddef>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <vector>

namespace {

struct LibraryCloser {
  void operator()(void *library) const { dlclose(library); }
};

// FNV-1a over what a host is given, so that two builds can be shown to give the same.
class Digest {
public:
  explicit Digest(bool enabled) : enabled_(enabled) {}
  void add(const void *bytes, size_t length) {
    if (!enabled_)
      return;
    const auto *p = static_cast<const unsigned char *>(bytes);
    for (size_t i = 0; i < length; ++i)
      value_ = (value_ ^ p[i]) * 0x100000001B3ull;
  }
  template <class T> void add(const T &value) { add(&value, sizeof value); }
  uint64_t value() const { return value_; }

private:
  bool enabled_;
  uint64_t value_ = 0xCBF29CE484222325ull;
};

// Opens the object of `record`, reads its body to the end and takes its properties.
bool indexObject(const AgentEntryTable &entries, const ObjectRecord *record, WalkTotals &totals,
                 Digest &digest, std::vector<unsigned char> &buffer, std::string &error) {
  AgentHandle object = 0;
  int32_t time = 0;
  if (entries.openObject(&object, record, &time) != StatusOk) {
    error = std::string("openObject failed for ") + record->path;
    return false;
  }
  digest.add(time);
  uint32_t got = 0;
  while (entries.readObject(object, buffer.data(), static_cast<uint32_t>(buffer.size()), &got) ==
         StatusOk) {
    totals.bodyBytes += got;
    digest.add(buffer.data(), got);
  }
  uint32_t used = 0, count = 0;
  int32_t status = entries.getObjectProperties(object, buffer.data(),
                                               static_cast<uint32_t>(buffer.size()), &used, &count);
  if (status == StatusPropertiesTooLarge) {
    buffer.resize(used);
    status = entries.getObjectProperties(object, buffer.data(),
                                         static_cast<uint32_t>(buffer.size()), &used, &count);
  }
  if (status != StatusOk) {
    error = "getObjectProperties failed";
    entries.closeObject(object);
    return false;
  }
  digest.add(buffer.data(), used);
  entries.closeObject(object);
  return true;
}

} // namespace

bool walkStore(const std::string &libraryPath, const std::string &agentKey, WalkMode mode,
               bool withDigest, WalkTotals &totals, std::string &error) {
  std::unique_ptr<void, LibraryCloser> library(dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library) {
    error = dlerror();
    return false;
  }
  auto initAgent = reinterpret_cast<InitAgentFunction>(dlsym(library.get(), "initAgent"));
  if (!initAgent) {
    error = "no initAgent in " + libraryPath;
    return false;
  }
  const AgentParams params = {agentKey.c_str(), nullptr, "EN", 0, 0, 0};
  AgentResult result{};
  if (initAgent(&params, &result) != 0 || !result.entryTable) {
    error = "initAgent failed";
    return false;
  }
  const AgentEntryTable &entries = *result.entryTable;

  constexpr size_t kRecordCapacity = 4096;
  std::vector<unsigned char> recordBytes(kRecordCapacity);
  auto *record = reinterpret_cast<ObjectRecord *>(recordBytes.data());
  std::vector<unsigned char> buffer(64 * 1024);
  Digest digest(withDigest);

  AgentHandle search = 0;
  int32_t time = 0;
  record->size = kRecordCapacity;
  int32_t status = entries.findFirstObjectHandle(0, &search, record, &time);
  bool ok = true;
  while (status == StatusOk) {
    ++totals.objects;
    totals.recordBytes += record->length;
    digest.add(record, offsetof(ObjectRecord, path) + std::strlen(record->path));
    digest.add(time);
    if (mode == WalkMode::Index && !indexObject(entries, record, totals, digest, buffer, error)) {
      ok = false;
      break;
    }
    record->size = kRecordCapacity;
    status = entries.findNextObjectHandle(search, record, &time);
  }
  if (ok && status != StatusNoMoreObjects) {
    error = "the walk ended with status " + std::to_string(status);
    ok = false;
  }
  if (totals.objects != 0)
    entries.closeFindObjectHandle(search);
  entries.terminateAgent();
  totals.digest = digest.value();
  return ok;
}
