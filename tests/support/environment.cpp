#include "tests/support/environment.h"

#ifdef _WIN32
#include <windows.h>

#include "core/platform/files.h"
#endif

#include <cstdlib>
#include <utility>

#include "core/platform/process.h"

namespace zorvik::tests {
namespace {

void SetEnvironment(const std::string& name, const std::optional<std::string>& value) {
#ifdef _WIN32
  const std::wstring text = core::platform::TextPath(value.value_or("")).native();
  SetEnvironmentVariableW(core::platform::TextPath(name).c_str(), value ? text.c_str() : nullptr);
#else
  if (value)
    setenv(name.c_str(), value->c_str(), 1);
  else
    unsetenv(name.c_str());
#endif
}

}  // namespace

ScopedEnvironment::ScopedEnvironment(std::string variable, const std::optional<std::string>& value)
    : name(std::move(variable)), before(core::platform::EnvironmentText(name.c_str())) {
  SetEnvironment(name, value);
}

ScopedEnvironment::~ScopedEnvironment() {
  SetEnvironment(name, before);
}

}  // namespace zorvik::tests
