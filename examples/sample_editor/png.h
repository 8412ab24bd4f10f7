#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zorvik::sample_editor {

struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;  // Row by row from the top; red, green and blue of each.
};

// The bytes of a PNG file.
std::string WritePng(const Picture& picture);

std::string Base64(std::string_view bytes);

}  // namespace zorvik::sample_editor
