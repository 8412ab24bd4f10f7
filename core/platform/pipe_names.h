#pragma once

#include <string>
#include <string_view>

namespace zorvik::core::platform {

// Whether `name` can be nothing but a pipe's own name. A record may hold any text, and a separator
// would make it the path of another thing, such as a file; a zero byte would cut it short.
inline bool IsBarePipeName(const std::string& name) {
  return name.find_first_of(std::string_view("/\\\0", 3)) == std::string::npos;
}

}  // namespace zorvik::core::platform
