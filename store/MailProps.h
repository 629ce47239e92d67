// The names of the seven properties a message gives the host.
#pragma once

#include <cstdint>

constexpr int kPropertyCount = 7;

// Writes the name table into `buffer`: seven pointers at the build's pointer width, each to
// its name inside the same block, then the zero-terminated names. `used` gets the size the
// table needs; 122 and nothing else written when that is more than `size`, else 0.
int32_t getPropertyNames(void *buffer, uint32_t size, uint32_t *used, uint32_t *count);
