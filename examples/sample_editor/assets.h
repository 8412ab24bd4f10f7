#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "examples/sample_editor/geometry.h"

// The library of the sample world: what can be placed, and what it looks like.
namespace zorvik::sample_editor {

enum class Paint : std::uint8_t {
  Wall,
  Thatch,
  Tile,
  Stone,
  Rock,
  Wood,
  Bark,
  Door,
  Trim,
  Glass,
  Leaf,
  Needle
};

struct Polygon {
  Vec3 middle;
  double half_x = 0;  // Half its width.
  double half_z = 0;
};

// A solid between two level polygons: a box, a gable, a slab of a roof, a trunk, a cone, a stone.
struct Part {
  Paint paint{};
  int sides = 4;
  Polygon foot;
  Polygon top;
  double roughness = 0;  // By how much of its width a corner may stray; grown things have some.
};

struct Asset {
  const char* id;
  std::vector<Part> parts;
  Vec3 box_min;  // Around all parts.
  Vec3 box_max;
};

const std::vector<Asset>& Library();
const Asset* FindAsset(std::string_view id);

// The box around a part as if it had no roughness, by its lowest and its highest corner.
std::pair<Vec3, Vec3> PartBox(const Part& part);
// The colour in daylight; 0 to 1.
Vec3 PaintColour(Paint paint);

}  // namespace zorvik::sample_editor
