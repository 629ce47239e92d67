// MallocPtr: ownership of a malloc'd buffer (the message body, a delimiter), released with
// free.
#pragma once

#include <cstdlib>
#include <memory>

struct FreeDeleter {
  void operator()(void *block) const { std::free(block); }
};

template <class T> using MallocPtr = std::unique_ptr<T, FreeDeleter>;
