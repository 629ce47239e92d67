// The page cache as a host meets a mail store: files read from disk, not just written.
//
// How a file's pages are cached depends on who read them from disk: a mapping that asks for
// huge pages (as the agent's do) brings them in 2 MB pieces that later mappings map whole,
// read() and read-ahead in small pieces that every mapping faults in 4 KB at a time. A
// benchmark therefore writes its files, drops them from the cache, and lets the reader it
// names read them first, as the store of a person who did not just write it is read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Writes the files' dirty pages out and drops all their pages from the cache.
void dropFromCache(const std::vector<std::string> &files);

// Reads every file once, so that its pages are in the cache for the run that follows.
// The bytes read.
uint64_t readThrough(const std::vector<std::string> &files);
