#pragma once

#include <optional>
#include <string>

namespace zorvik::tests {

// Gives an environment variable a value in UTF-8, or none, until the end of the scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string variable, const std::optional<std::string>& value);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::string name;
  std::optional<std::string> before;
};

}  // namespace zorvik::tests
