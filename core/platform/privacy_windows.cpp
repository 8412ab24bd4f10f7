#include "core/platform/privacy.h"

namespace zorvik::core::platform {

std::optional<std::string> RightsOfOthers(const std::filesystem::path& /*path*/) {
  return std::nullopt;
}

}  // namespace zorvik::core::platform
