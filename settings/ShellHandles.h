// ShellRef, ItemList and TaskMem: owners for what the shell hands out, interfaces to release,
// item lists to free with the shell's allocator and blocks of its task allocator; and
// ComApartment, the COM set-up the shell's calls need.
#pragma once

#include "platform/Shell.h"

#include <memory>

struct ShellReleaser {
  template <class Interface> void operator()(Interface *object) const { object->Release(); }
};
template <class Interface> using ShellRef = std::unique_ptr<Interface, ShellReleaser>;

// Frees a list as the shell's allocator wants: through the allocator, which is then released.
struct ItemListFreer {
  void operator()(ITEMIDLIST *list) const {
    IMalloc *allocator = nullptr;
    if (SHGetMalloc(&allocator) != S_OK || allocator == nullptr)
      return;
    const ShellRef<IMalloc> owned(allocator);
    owned->Free(list);
  }
};
using ItemList = std::unique_ptr<ITEMIDLIST, ItemListFreer>;

// A block of the shell's task allocator, such as a wide name from GetDisplayNameOf.
struct TaskMemFreer {
  void operator()(void *block) const { CoTaskMemFree(block); }
};
template <class T> using TaskMem = std::unique_ptr<T, TaskMemFreer>;

// COM on this thread, single-threaded, for a scope: the folder picker and the file icons need
// it. A thread whose COM is set up already keeps it as it was; one whose COM is
// multi-threaded calls the shell all the same, as nothing better is left.
class ComApartment {
public:
  ComApartment() : initialised_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED) >= 0) {}
  ComApartment(const ComApartment &) = delete;
  ComApartment &operator=(const ComApartment &) = delete;
  ~ComApartment() {
    if (initialised_)
      CoUninitialize(); // S_FALSE too: every successful call is balanced
  }

private:
  bool initialised_;
};
