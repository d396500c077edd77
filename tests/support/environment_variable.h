#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

// Sets or unsets an environment variable during its lifetime.
class EnvironmentVariable {
public:
  EnvironmentVariable(const char* name, const char* value) : name_(name) {
    if (const char* previous = std::getenv(name))
      previous_ = previous;
    set(value);
  }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable() { set(previous_ ? previous_->c_str() : nullptr); }

private:
  void set(const char* value) {
    value == nullptr ? unsetenv(name_) : setenv(name_, value, 1);
    tzset();
  }

  const char* name_;
  std::optional<std::string> previous_;
};
