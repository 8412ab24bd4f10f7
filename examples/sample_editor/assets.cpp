#include "examples/sample_editor/assets.h"

#include <algorithm>
#include <utility>

namespace zorvik::sample_editor {

namespace {

// `foot` is the middle of its bottom.
Part Box(Paint paint, const Vec3& foot, double half_x, double height, double half_z) {
  return {paint, 4, {foot, half_x, half_z}, {foot + Vec3{0, height, 0}, half_x, half_z}};
}

// Around the axis, from one height and half width to another.
Part Round(Paint paint, int sides, double from, double to, double half, double top_half,
           double roughness = 0) {
  return {paint, sides, {{0, from, 0}, half, half}, {{0, to, 0}, top_half, top_half}, roughness};
}

// One side of a roof: a slab that leans from the eaves to the ridge, which runs along x.
Part Slab(Paint paint, double eaves_y, double eaves_z, double ridge_y, double half_x,
          double half_thick) {
  return {
      paint, 4, {{0, eaves_y, eaves_z}, half_x, half_thick}, {{0, ridge_y, 0}, half_x, half_thick}};
}

Vec3 Lower(const Vec3& a, const Vec3& b) {
  return {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)};
}
Vec3 Higher(const Vec3& a, const Vec3& b) {
  return {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)};
}

Asset MakeAsset(const char* id, std::vector<Part> parts) {
  auto [low, high] = PartBox(parts.front());
  for (const Part& part : parts) {
    low = Lower(low, PartBox(part).first);
    high = Higher(high, PartBox(part).second);
  }
  return {id, std::move(parts), low, high};
}

std::vector<Part> HouseParts() {
  std::vector<Part> parts = {
      Box(Paint::Stone, {0, -1, 0}, 4.1, 1.4, 3.1),
      Box(Paint::Wall, {0, 0.4, 0}, 4, 2.6, 3),
      {Paint::Wall, 4, {{0, 3, 0}, 4, 3}, {{0, 5, 0}, 4, 0}},  // The gables.
      Slab(Paint::Thatch, 2.6, 3.45, 5.1, 4.4, 0.15),
      Slab(Paint::Thatch, 2.6, -3.45, 5.1, 4.4, 0.15),
      Box(Paint::Stone, {2.5, 3.6, -1.2}, 0.4, 2.1, 0.4),
      Box(Paint::Stone, {0, -0.6, 3.5}, 0.9, 0.75, 0.5),
      Box(Paint::Trim, {0, 0.1, 3}, 0.75, 2.3, 0.06),
      Box(Paint::Door, {0, 0.1, 3}, 0.6, 2.15, 0.09),
  };
  for (const double x : {-2.4, 2.4}) {
    for (const double z : {-3.0, 3.0}) {
      parts.push_back(Box(Paint::Trim, {x, 1.1, z}, 0.75, 1.3, 0.06));
      for (const double half : {-0.32, 0.32})
        parts.push_back(Box(Paint::Glass, {x + half, 1.22, z}, 0.27, 1.05, 0.09));
    }
  }
  for (const double x : {-4.0, 4.0}) {
    parts.push_back(Box(Paint::Trim, {x, 1.1, 0}, 0.06, 1.3, 0.75));
    for (const double half : {-0.32, 0.32})
      parts.push_back(Box(Paint::Glass, {x, 1.22, half}, 0.09, 1.05, 0.27));
  }
  return parts;
}

std::vector<Part> JettyParts() {
  std::vector<Part> parts;
  for (const double z : {-2.7, -0.9, 0.9, 2.7})
    for (const double x : {-0.8, 0.8})
      parts.push_back(Box(Paint::Bark, {x, -2.5, z}, 0.12, 2.9, 0.12));
  for (int plank = 0; plank < 10; ++plank)
    parts.push_back(Box(Paint::Wood, {0, 0, -2.7 + plank * 0.6}, 1, 0.12, 0.27));
  return parts;
}

}  // namespace

const std::vector<Asset>& Library() {
  static const std::vector<Asset> library = {
      MakeAsset("zorvik_arbusto", {Round(Paint::Leaf, 7, -0.2, 0.5, 0.5, 0.8, 0.15),
                                   Round(Paint::Leaf, 7, 0.5, 1.1, 0.8, 0.3, 0.15)}),
      MakeAsset("zorvik_barco",
                {{Paint::Wood, 8, {{0, -0.2, 0}, 0.5, 1.3}, {{0, 0.5, 0}, 0.85, 2.1}},
                 {Paint::Bark, 8, {{0, 0.5, 0}, 0.7, 1.85}, {{0, 0.51, 0}, 0.7, 1.85}},
                 Box(Paint::Wood, {0, 0.4, -0.6}, 0.75, 0.17, 0.15),
                 Box(Paint::Wood, {0, 0.4, 0.7}, 0.75, 0.17, 0.15)}),
      MakeAsset("zorvik_cais", JettyParts()),
      MakeAsset("zorvik_carvalho", {Round(Paint::Bark, 6, -0.4, 2.8, 0.42, 0.28),
                                    Round(Paint::Leaf, 9, 1.9, 3.5, 1, 2.2, 0.14),
                                    Round(Paint::Leaf, 9, 3.5, 5.3, 2.2, 1.9, 0.14),
                                    Round(Paint::Leaf, 9, 5.3, 7, 1.9, 0.5, 0.14)}),
      MakeAsset("zorvik_casa", HouseParts()),
      MakeAsset("zorvik_cerca", {Box(Paint::Wood, {-1.4, -0.4, 0}, 0.1, 1.6, 0.1),
                                 Box(Paint::Wood, {0, -0.4, 0}, 0.1, 1.6, 0.1),
                                 Box(Paint::Wood, {1.4, -0.4, 0}, 0.1, 1.6, 0.1),
                                 Box(Paint::Wood, {0, 0.35, 0}, 1.5, 0.16, 0.05),
                                 Box(Paint::Wood, {0, 0.8, 0}, 1.5, 0.16, 0.05)}),
      MakeAsset("zorvik_laje", {Round(Paint::Stone, 7, -0.2, 0.06, 0.7, 0.6, 0.15)}),
      MakeAsset("zorvik_pinheiro", {Round(Paint::Bark, 6, -0.4, 2, 0.26, 0.2),
                                    Round(Paint::Needle, 8, 1.3, 4.7, 1.6, 0.4, 0.1),
                                    Round(Paint::Needle, 8, 3.4, 6.7, 1.3, 0.3, 0.1),
                                    Round(Paint::Needle, 8, 5.5, 9, 0.95, 0, 0.1)}),
      MakeAsset("zorvik_poco", {Round(Paint::Stone, 10, -2, 0.85, 1, 1),
                                Round(Paint::Glass, 10, 0.85, 0.86, 0.75, 0.75),
                                Box(Paint::Wood, {-0.85, 0.8, 0}, 0.08, 1.7, 0.08),
                                Box(Paint::Wood, {0.85, 0.8, 0}, 0.08, 1.7, 0.08),
                                Slab(Paint::Thatch, 2.1, 0.9, 2.8, 1.2, 0.1),
                                Slab(Paint::Thatch, 2.1, -0.9, 2.8, 1.2, 0.1)}),
      MakeAsset("zorvik_porta", {Box(Paint::Door, {0, 0, 0}, 0.6, 2.2, 0.11),
                                 Box(Paint::Trim, {0.42, 1, 0}, 0.05, 0.1, 0.16)}),
      MakeAsset("zorvik_rocha",
                {{Paint::Rock, 7, {{0, -0.4, 0}, 0.85, 0.65}, {{0, 0.3, 0}, 1, 0.8}, 0.2},
                 {Paint::Rock, 7, {{0, 0.3, 0}, 1, 0.8}, {{0.1, 0.9, 0}, 0.45, 0.35}, 0.2}}),
      // Lies over the roof that a house has of its own.
      MakeAsset("zorvik_telhado", {Slab(Paint::Tile, -0.5, 3.6, 2.2, 4.6, 0.2),
                                   Slab(Paint::Tile, -0.5, -3.6, 2.2, 4.6, 0.2)}),
  };
  return library;
}

const Asset* FindAsset(std::string_view id) {
  const auto found = std::find_if(Library().begin(), Library().end(),
                                  [&](const Asset& asset) { return id == asset.id; });
  return found == Library().end() ? nullptr : &*found;
}

std::pair<Vec3, Vec3> PartBox(const Part& part) {
  const auto& [foot, foot_x, foot_z] = part.foot;
  const auto& [top, top_x, top_z] = part.top;
  return {Lower(foot - Vec3{foot_x, 0, foot_z}, top - Vec3{top_x, 0, top_z}),
          Higher(foot + Vec3{foot_x, 0, foot_z}, top + Vec3{top_x, 0, top_z})};
}

Vec3 PaintColour(Paint paint) {
  static constexpr Vec3 kColours[] = {{0.97, 0.92, 0.82}, {0.66, 0.53, 0.33}, {0.74, 0.36, 0.26},
                                      {0.62, 0.60, 0.57}, {0.55, 0.54, 0.53}, {0.60, 0.45, 0.30},
                                      {0.42, 0.31, 0.22}, {0.40, 0.25, 0.16}, {0.97, 0.95, 0.90},
                                      {0.27, 0.38, 0.47}, {0.44, 0.60, 0.27}, {0.23, 0.43, 0.29}};
  return kColours[static_cast<std::size_t>(paint)];
}

}  // namespace zorvik::sample_editor
