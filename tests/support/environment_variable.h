#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>

namespace orb::test {

/// Sets a variable of this process's environment, and sets it back when the object goes.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::string& value) : name_(std::move(name)) {
    if (const char* earlier = getenv(name_.c_str())) {
      earlier_ = earlier;
    }
    setenv(name_.c_str(), value.c_str(), 1);
  }
  ~EnvironmentVariable() {
    if (earlier_) {
      setenv(name_.c_str(), earlier_->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
  std::string name_;
  std::optional<std::string> earlier_;
};

}  // namespace orb::test
