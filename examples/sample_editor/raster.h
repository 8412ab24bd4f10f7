#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "examples/sample_editor/geometry.h"

namespace zorvik::sample_editor {

// For each point of a grid what is nearest there, out of triangles that are drawn in any order.
struct Raster {
  Raster(int width, int height);

  // Draws a triangle of that name. Corners are: points across, points down, and nearness, which is
  // above 0 and changes evenly across the triangle.
  void Draw(const std::array<Vec3, 3>& corners, std::uint32_t name);
  std::size_t Index(int column, int row) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(column);
  }

  int width;
  int height;
  std::vector<float> nearness;       // 0 where there is nothing.
  std::vector<std::uint32_t> names;  // Of the triangles.
};

}  // namespace zorvik::sample_editor
