// The store a whole-process benchmark measures: written once, kept between runs when asked,
// and the registry that points the agent at it.
#pragma once

#include "bench/BenchHost.h"
#include "bench/RealCorpus.h"
#include "bench/StoreWriter.h"

#include <cstdint>
#include <string>
#include <vector>

// What a whole-store benchmark is told of its store: its size, where it goes, whether it is
// kept for the next run, and the mhhost that indexes it.
struct StoreOptions {
  uint64_t messages = 100000;
  std::string dir;
  bool keep = false;
  std::string mhhost;
  // Takes the current argument and its value when it is one of these; false when not.
  bool take(BenchArguments &arguments);
  // What was not given: $TMPDIR/`bench`, and the mhhost beside this program (`self`).
  void settle(const char *bench, const std::string &self);
};

struct PeerStore {
  std::string home; // the store's folder: its mail, indexes and settings
  std::string registry;
  StoreFiles files;
  std::vector<std::string> words; // searched for, with what makes each worth searching for
  std::vector<std::string> wordNotes;
};

// Writes the store of `messages` messages of `client` under `dir`/`kind` (or reuses the one a
// run with `keep` left there), and points $TUK_REGISTRY at a registry beside it whose MailPath
// names it.
PeerStore prepareStore(Client client, const char *kind, const char *label, Corpus corpus,
                       uint64_t messages, const std::string &dir, bool keep);

double megabytes(uint64_t bytes);
uint64_t fileSize(const std::string &path);
