// The scan of a mail directory for its fingerprint: FNV-1a over each entry's relative path
// and status, in sorted order.
#include "host/StoreTree.h"

#include <algorithm>
#include <dirent.h>
#include <sys/stat.h>

namespace {

// Deeper than the agent's walk goes: a deeper tree changes nothing the agent sees, and the
// agent fails on it anyway.
constexpr int kDeepestLevel = 16;

class Fingerprint {
public:
  void add(const void *bytes, size_t size) {
    const auto *p = static_cast<const unsigned char *>(bytes);
    for (size_t i = 0; i < size; ++i) {
      hash_ ^= p[i];
      hash_ *= 0x100000001b3ull;
    }
  }
  void add(const std::string &text) { add(text.data(), text.size() + 1); }
  void add(int64_t value) { add(&value, sizeof value); }
  int64_t value() const { return static_cast<int64_t>(hash_); }

private:
  uint64_t hash_ = 0xcbf29ce484222325ull;
};

int64_t stateOf(const struct stat &status) {
  Fingerprint state;
  state.add(static_cast<int64_t>(status.st_mode & S_IFMT));
  state.add(static_cast<int64_t>(status.st_size));
  state.add(static_cast<int64_t>(status.st_ino));
  state.add(static_cast<int64_t>(status.st_mtim.tv_sec));
  state.add(static_cast<int64_t>(status.st_mtim.tv_nsec));
  state.add(static_cast<int64_t>(status.st_ctim.tv_sec));
  state.add(static_cast<int64_t>(status.st_ctim.tv_nsec));
  // 0 means "unknown" to the callers.
  return state.value() != 0 ? state.value() : 1;
}

std::vector<std::string> sortedEntries(const std::string &folder, bool &readable) {
  std::vector<std::string> names;
  DIR *directory = opendir(folder.c_str());
  readable = directory != nullptr;
  if (directory == nullptr)
    return names;
  while (const struct dirent *entry = readdir(directory)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..")
      names.push_back(name);
  }
  closedir(directory);
  std::sort(names.begin(), names.end());
  return names;
}

void scanFolder(const std::string &folder, const std::string &relative, int level,
                Fingerprint &fingerprint, StoreTree &tree) {
  bool readable = false;
  const std::vector<std::string> names = sortedEntries(folder, readable);
  if (!readable) {
    tree.unreadable.push_back(folder);
    fingerprint.add(relative + "/?");
    return;
  }
  for (const std::string &name : names) {
    std::string path = folder;
    path.append("/").append(name);
    std::string relativePath = relative;
    relativePath.append("/").append(name);
    struct stat status;
    if (lstat(path.c_str(), &status) != 0)
      continue;
    const int64_t state = stateOf(status);
    fingerprint.add(relativePath);
    fingerprint.add(state);
    if (S_ISREG(status.st_mode)) {
      tree.totalBytes += static_cast<uint64_t>(status.st_size);
      tree.fileStates[path] = state;
    } else if (S_ISDIR(status.st_mode) && level + 1 < kDeepestLevel) {
      scanFolder(path, relativePath, level + 1, fingerprint, tree);
    }
  }
}

} // namespace

StoreTree scanStoreTree(const std::string &mailDirectory, const std::string &settings) {
  StoreTree tree;
  Fingerprint fingerprint;
  fingerprint.add(mailDirectory);
  fingerprint.add(settings);
  struct stat status;
  if (stat(mailDirectory.c_str(), &status) == 0)
    fingerprint.add(stateOf(status));
  scanFolder(mailDirectory, "", 0, fingerprint, tree);
  tree.fingerprint = fingerprint.value() != 0 ? fingerprint.value() : 1;
  return tree;
}

int64_t fileStateOf(const std::string &path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 ? stateOf(status) : 0;
}
