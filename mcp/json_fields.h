#pragma once

#include <string_view>
#include <utility>

#include "core/json.h"

namespace zorvik::mcp {

// Moves the value of a field out of an object and leaves a null in its place. Null when there is no
// such field. Large documents pass through the server this way without being copied.
inline core::Json TakeField(core::Json& object, std::string_view key) {
  for (auto& [name, value] : object.fields)
    if (name == key) return std::exchange(value, core::Json());
  return {};
}

}  // namespace zorvik::mcp
