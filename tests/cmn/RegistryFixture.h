// Registry tests: each test gets a registry file of its own, named by $TUK_REGISTRY.
#pragma once

#include "cmn/Registry.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

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
