// One pass over files through read-only shared mappings, as the agent reads a mailbox: the
// least that a walk by mapping can cost, beside cat's read(2) into a buffer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Maps each file, reads every byte once (an XOR of its words), unmaps it. The XOR, so that
// the reads are not left out; 0 for files that could not be mapped.
uint64_t readMapped(const std::vector<std::string> &files);
