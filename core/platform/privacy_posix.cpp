#include "core/platform/privacy.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>

namespace zorvik::core::platform {

std::optional<std::string> RightsOfOthers(const std::filesystem::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) == -1) return std::nullopt;
  if (status.st_uid != geteuid() && status.st_uid != 0)
    return "owner " + std::to_string(status.st_uid);
  if ((status.st_mode & (S_IRWXG | S_IRWXO)) == 0) return "";
  std::array<char, 8> digits{};
  constexpr int kOctal = 8;
  const auto written =
      std::to_chars(digits.data(), digits.data() + digits.size(), status.st_mode & 07777U, kOctal);
  return "mode 0" + std::string(digits.data(), written.ptr);
}

}  // namespace zorvik::core::platform
