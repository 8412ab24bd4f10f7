#include "tests/support/environment.h"

#include <windows.h>

#include "core/platform/files.h"

namespace zorvik::tests {

void SetEnvironment(const std::string& name, const std::optional<std::string>& value) {
  const std::wstring wide_name = core::platform::TextPath(name).native();
  const std::wstring wide_value = core::platform::TextPath(value.value_or("")).native();
  SetEnvironmentVariableW(wide_name.c_str(), value ? wide_value.c_str() : nullptr);
}

}  // namespace zorvik::tests
