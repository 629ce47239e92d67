// The POSIX calls the suites make, on Windows: every suite built for Windows includes this
// first (WindowsSuites.cmake).
#pragma once

#include <cstdlib>

inline int setenv(const char *name, const char *value, int overwrite) {
  if (!overwrite && std::getenv(name) != nullptr)
    return 0;
  return _putenv_s(name, value);
}

// The C runtime removes a variable that is set to nothing.
inline int unsetenv(const char *name) {
  return _putenv_s(name, "");
}
