// Small generated stores of the four clients for the demo, each with the features of its
// format: nested folders, mail files without their control file, empty mailboxes,
// delimiters that only look like one, zero bytes, file headers and bare line feeds.
#pragma once

#include <string>
#include <vector>

struct DemoStore {
  std::string client; // "eudora", ...
  std::string mailDirectory;
  std::string programDirectory; // empty: none, so that the settings check warns
  std::string showQuery;        // a search that finds one of its messages
};

// Writes the four stores below `folder`. False with `error` when a file can't be written.
bool writeDemoStores(const std::string &folder, std::vector<DemoStore> &stores, std::string &error);
