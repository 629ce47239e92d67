// Reading every message again into a new full-text table.
#include "host/TextRebuild.h"

#include "host/CommandSupport.h"
#include "host/MessageLoader.h"

#include <chrono>
#include <cstdio>
#include <vector>

namespace {

// Below this many, stale rows cost less than reading every message again.
constexpr int64_t kFewStaleRows = 1000;

} // namespace

bool textsWantRebuild(IndexDb &db) {
  const int64_t stale = db.staleTexts();
  return stale > kFewStaleRows && stale > db.objectCount() / 4;
}

bool rebuildTexts(IndexDb &db, const HostSettings &settings, std::string &error) {
  const auto start = std::chrono::steady_clock::now();
  const int64_t stale = db.staleTexts();
  if (!db.begin()) {
    error = db.errorText();
    return false;
  }
  db.beginTextRebuild();
  int64_t read = 0;
  std::vector<int64_t> lost;
  for (const std::string &key : db.agentKeys()) {
    const std::unique_ptr<AgentLibrary> agent = loadAgent(settings, key, error);
    if (!agent) {
      db.rollback();
      return false;
    }
    MessageLoader loader(agent->entries(), framingOfKey(key));
    RecordBuffer record;
    LoadedMessage loaded;
    db.eachObject(key, [&](const IndexedObject &object) {
      if (!record.assign(object.record.data(), object.record.size()) ||
          !loader.load(record, loaded)) {
        lost.push_back(object.id);
        return;
      }
      db.addRebuiltText(object.id, loaded.message, searchedText(loaded.message));
      ++read;
    });
  }
  for (const int64_t id : lost)
    db.forgetObject(id);
  db.finishTextRebuild();
  if (!db.ok() || !db.commit()) {
    error = db.errorText();
    db.rollback();
    return false;
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("full-text index made anew: %lld rows of removed messages dropped, %lld messages "
              "read again, %zu no longer readable, in %.3f s\n",
              static_cast<long long>(stale), static_cast<long long>(read), lost.size(), seconds);
  return true;
}
