// What the host can tell of a store without reading a mail file: a fingerprint of every entry
// below the mail directory (kind, size, times, inode, read with lstat and never followed),
// and of one file. A store whose fingerprint and mailboxes are unchanged needs no walk.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

struct StoreTree {
  int64_t fingerprint = 0;
  uint64_t totalBytes = 0;             // of the regular files: a bound for a progress bar
  std::vector<std::string> unreadable; // folders that can't be listed
  // The state of each regular file, by the path "mail directory/relative path".
  std::unordered_map<std::string, int64_t> fileStates;
};

// Scans the tree below `mailDirectory`. `settings` (the extensions and anything else that
// decides what the agent makes of the tree) goes into the fingerprint.
StoreTree scanStoreTree(const std::string &mailDirectory, const std::string &settings);

// The state of one file now: size, modification and change times and inode; 0 when it
// can't be had.
int64_t fileStateOf(const std::string &path);
