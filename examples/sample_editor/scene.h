#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "examples/sample_editor/geometry.h"
#include "examples/sample_editor/world.h"

// The world as surfaces, for pictures of it. Colours are those in daylight, from 0 to 1.
namespace zorvik::sample_editor {

struct GroundPoint {
  Vec3 point;
  Vec3 normal;
  Vec3 colour;
};

// Of the terrain's own resolution, from the north-west.
const GroundPoint& Ground(int column, int row);

struct Facet {
  std::array<Vec3, 3> corners;
  Vec3 normal;
  Vec3 colour;
};

// The surfaces of all that stands in the world.
struct Scene {
  std::vector<Facet> facets;
  std::size_t shadowless = 0;  // The facets from here on cast no shadow.
};

Scene MakeScene(const Objects& objects);

}  // namespace zorvik::sample_editor
