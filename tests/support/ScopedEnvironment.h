// An environment variable set, or removed with nullopt, until the end of the scope; `changed`
// runs after each change, as a cache of the variable (the time zone's) must be refreshed.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

class ScopedEnvironment {
public:
  ScopedEnvironment(const char *name, const std::optional<std::string> &value,
                    void (*changed)() = nullptr)
      : name_(name), changed_(changed) {
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
    if (changed_)
      changed_();
  }
  const char *name_;
  void (*changed_)();
  std::optional<std::string> old_;
};
