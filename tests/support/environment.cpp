#include "tests/support/environment.h"

#include <utility>

#include "core/platform/process.h"

namespace zorvik::tests {

ScopedEnvironment::ScopedEnvironment(std::string variable, const std::optional<std::string>& value)
    : name(std::move(variable)), before(core::platform::EnvironmentText(name.c_str())) {
  SetEnvironment(name, value);
}

ScopedEnvironment::~ScopedEnvironment() {
  SetEnvironment(name, before);
}

}  // namespace zorvik::tests
