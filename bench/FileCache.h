// The page cache as a host meets a mail store: files read from disk, not just written.
//
// Pages that a program has just written sit in the cache in small pieces, and a mapping of
// them reads several times slower than of the large pieces that the kernel's read-ahead
// makes when the same file is read from disk. A benchmark therefore writes its files, drops
// them from the cache and reads them back, as the store of a person who did not just write
// it is read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Writes the files' dirty pages out and drops all their pages from the cache.
void dropFromCache(const std::vector<std::string> &files);

// Reads every file once, so that its pages are in the cache for the run that follows.
// The bytes read.
uint64_t readThrough(const std::vector<std::string> &files);
