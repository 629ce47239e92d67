// Registry tests: each test gets a registry file of its own, named by $TUK_REGISTRY.
#pragma once

#include "cmn/Registry.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

// Sets an environment variable, or removes it with nullopt, until the end of the scope.
class ScopedEnvironment {
public:
  ScopedEnvironment(const char *name, const std::optional<std::string> &value) : name_(name) {
    if (const char *old = std::getenv(name))
      old_ = old;
    apply(value);
  }
  ScopedEnvironment(const ScopedEnvironment &) = delete;
  ScopedEnvironment &operator=(const ScopedEnvironment &) = delete;
  ~ScopedEnvironment() { apply(old_); }

private:
  void apply(const std::optional<std::string> &value) {
    if (value)
      setenv(name_, value->c_str(), 1);
    else
      unsetenv(name_);
  }

  const char *name_;
  std::optional<std::string> old_;
};

class RegistryTest : public ::testing::Test {
protected:
  // The string or integer under `key`, or a marker that the read failed.
  static std::string readString(const char *key, const char *name) {
    CString value("<unread>");
    return GetRegValue(key, name, value) ? std::string(value.bytes()) : "<unread>";
  }
  static std::optional<int32_t> readNumber(const char *key, const char *name) {
    int32_t value = 0;
    if (!GetRegValue(key, name, &value))
      return std::nullopt;
    return value;
  }

  TempDir dir_;
  const std::string registry_ = dir_.file("registry.reg");
  ScopedEnvironment registryVariable_{"TUK_REGISTRY", registry_};
};
