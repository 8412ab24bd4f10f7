#include "examples/sample_editor/scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "examples/sample_editor/assets.h"
#include "examples/sample_editor/terrain.h"

namespace zorvik::sample_editor {

namespace {

constexpr double kCliffFoot = kSeaLevel - 4;

// From 0 to 1, the same for the same numbers.
double Noise(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
  std::uint32_t mixed = a * 0x9E3779B1U ^ b * 0x85EBCA77U ^ c * 0xC2B2AE3DU;
  mixed = (mixed ^ (mixed >> 15U)) * 0x2C1B3C6DU;
  mixed = (mixed ^ (mixed >> 12U)) * 0x297A2D39U;
  return static_cast<double>(mixed >> 8U) / (1U << 24U);
}

GroundPoint MakeGroundPoint(double x, double z) {
  const std::array<double, 3> layers = LayerWeights(x, z);
  const double height = GroundHeight(x, z);
  const double patch =
      0.5 + 0.5 * std::sin(x / 9 + 2 * std::sin(z / 13)) * std::sin(z / 11 - x / 29);
  const Vec3 meadow = Mixed({0.45, 0.60, 0.28}, {0.58, 0.63, 0.33}, 0.6 * patch + height / 50);
  const Vec3 colour =
      Vec3{0.88, 0.80, 0.60} * layers[0] + meadow * layers[1] + Vec3{0.60, 0.57, 0.45} * layers[2];
  return {{x, height, z}, GroundNormal(x, z), colour};
}

void AddFacet(Scene& scene, const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& outwards,
              const Vec3& colour) {
  const double length = Length(outwards);
  if (length > 0) scene.facets.push_back({{a, b, c}, outwards * (1 / length), colour});
}

void AddQuad(Scene& scene, const std::array<Vec3, 4>& at, const Vec3& colour) {
  const Vec3 outwards = Cross(at[3] - at[1], at[2] - at[0]);
  AddFacet(scene, at[0], at[1], at[2], outwards, colour);
  AddFacet(scene, at[0], at[2], at[3], outwards, colour);
}

void AddPart(Scene& scene, const Part& part, const Frame& frame, std::uint32_t seed,
             const Vec3& colour) {
  const auto corner = [&](const Polygon& polygon, int index) {
    const double angle = (index + 0.5) * 2 * std::numbers::pi / part.sides;
    // Parts that meet at some height stray alike there.
    const auto level = static_cast<std::uint32_t>(static_cast<int>(polygon.middle.y * 16));
    const double noise = Noise(seed, static_cast<std::uint32_t>(index % part.sides), level);
    // A box is as wide as it says.
    const double reach =
        (part.sides == 4 ? std::numbers::sqrt2 : 1) * (1 + part.roughness * (2 * noise - 1));
    return PointToWorld(frame, polygon.middle + Vec3{std::cos(angle) * polygon.half_x, 0,
                                                     std::sin(angle) * polygon.half_z} *
                                                    reach);
  };
  const Vec3 foot = PointToWorld(frame, part.foot.middle);
  const Vec3 top = PointToWorld(frame, part.top.middle);
  for (int side = 0; side < part.sides; ++side) {
    const Vec3 foot_a = corner(part.foot, side);
    const Vec3 foot_b = corner(part.foot, side + 1);
    const Vec3 top_a = corner(part.top, side);
    const Vec3 top_b = corner(part.top, side + 1);
    AddQuad(scene, {foot_a, foot_b, top_b, top_a}, colour);
    AddFacet(scene, top, top_b, top_a, Cross(top_b - top, top_a - top), colour);
    AddFacet(scene, foot, foot_a, foot_b, Cross(foot_a - foot, foot_b - foot), colour);
  }
}

void AddObject(Scene& scene, const Objects& objects, const Object& object) {
  const Asset* asset = FindAsset(object.fields.At("asset").text);
  if (asset == nullptr) return;
  const Frame frame = WorldFrame(objects, object);
  const core::Json& tint = object.fields.At("tint");
  const auto shown = [&](std::size_t channel) { return std::pow(tint[channel].number, 1 / 2.2); };
  const auto seed = static_cast<std::uint32_t>(object.id);
  for (const Part& part : asset->parts) {
    // No two grown things are quite alike.
    const double shade = part.roughness > 0 ? 0.9 + 0.2 * Noise(seed, 0, 0) : 1;
    AddPart(scene, part, frame, seed,
            Times(PaintColour(part.paint), Vec3{shown(0), shown(1), shown(2)}) * shade);
  }
}

// The world ends in cliffs.
void AddCliffs(Scene& scene) {
  const auto add = [&](int ax, int az, int bx, int bz) {
    const Vec3 a = Ground(ax, az).point;
    const Vec3 b = Ground(bx, bz).point;
    AddQuad(scene, {Vec3{a.x, kCliffFoot, a.z}, Vec3{b.x, kCliffFoot, b.z}, b, a},
            {0.58, 0.52, 0.44});
  };
  constexpr int kLast = kTerrainResolution - 1;
  for (int at = 0; at < kLast; ++at) {
    add(at + 1, 0, at, 0);
    add(at, kLast, at + 1, kLast);
    add(0, at, 0, at + 1);
    add(kLast, at + 1, kLast, at);
  }
}

}  // namespace

const GroundPoint& Ground(int column, int row) {
  static const std::vector<GroundPoint> points = [] {
    std::vector<GroundPoint> made;
    for (int z = 0; z < kTerrainResolution; ++z)
      for (int x = 0; x < kTerrainResolution; ++x)
        made.push_back(
            MakeGroundPoint(x * kTerrainStep - kTerrainHalf, z * kTerrainStep - kTerrainHalf));
    return made;
  }();
  return points[static_cast<std::size_t>(row) * kTerrainResolution +
                static_cast<std::size_t>(column)];
}

Scene MakeScene(const Objects& objects) {
  Scene scene;
  for (const bool casts : {true, false}) {
    if (!casts) scene.shadowless = scene.facets.size();
    for (const auto& [id, object] : objects)
      if (object->fields.At("cast_shadow").boolean == casts && Shown(objects, *object))
        AddObject(scene, objects, *object);
  }
  AddCliffs(scene);
  return scene;
}

}  // namespace zorvik::sample_editor
