#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zorvik::sample_editor {

// A picture whose pixels, row by row from the top, are indices into its palette.
struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::array<std::uint8_t, 3>> palette;  // At most 256 colours.
  std::vector<std::uint8_t> pixels;
};

// The bytes of a PNG file. Only runs of one colour are compressed: little code, and enough for
// pictures with large even surfaces.
std::string WritePng(const Picture& picture);

std::string Base64(std::string_view bytes);

}  // namespace zorvik::sample_editor
