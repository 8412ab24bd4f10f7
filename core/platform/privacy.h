#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace zorvik::core::platform {

// What lets others than this user at the file or folder: its owner, or its mode, as a text for
// people. Empty when nothing does. No value when the system has no such modes, or nothing is there.
std::optional<std::string> RightsOfOthers(const std::filesystem::path& path);

}  // namespace zorvik::core::platform
