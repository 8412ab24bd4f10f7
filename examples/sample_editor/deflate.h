#pragma once

#include <string>
#include <string_view>

namespace zorvik::sample_editor {

// The bytes as a zlib stream, compressed.
std::string Compress(std::string_view bytes);

}  // namespace zorvik::sample_editor
