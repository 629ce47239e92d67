// The files of the search page, built into mhhost from host/web/.
#pragma once

#include <cstddef>
#include <string>

struct WebFile {
  const char *name;
  const char *type; // the Content-Type to serve it with
  const unsigned char *bytes;
  size_t size;
};

// The file of that name (no folders), or null.
const WebFile *findWebFile(const std::string &name);
