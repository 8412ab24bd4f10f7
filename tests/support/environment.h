#pragma once

#include <optional>
#include <string>

namespace zorvik::tests {

// Sets an environment variable of this process to UTF-8 text, or removes it.
void SetEnvironment(const std::string& name, const std::optional<std::string>& value);

// Gives an environment variable a value, or none, until the end of the scope.
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
