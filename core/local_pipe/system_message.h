#pragma once

#include <cstdint>
#include <string>

namespace zorvik::core {

// How the line transport puts a failure of the platform into its messages.
inline std::string SystemMessage(std::uint32_t code) {
  return "erro do Windows " + std::to_string(code);
}

}  // namespace zorvik::core
