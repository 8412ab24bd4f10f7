#include "examples/sample_editor/overlaps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "examples/sample_editor/assets.h"

namespace zorvik::sample_editor {

using core::Json;

namespace {

constexpr double kTouch = 0.3;  // Metres; what stands closer together than this is meant to.

// The axes reach from the middle to the sides.
using SolidBox = Frame;

struct Solid {
  std::int64_t id = 0;
  std::int64_t root = 0;
  std::string asset;
  std::vector<SolidBox> boxes;  // One around each part, or there would be no room below a tree.
};

Solid MakeSolid(const Objects& objects, const Object& object, const Asset& asset) {
  Solid solid{object.id, object.id, asset.id, {}};
  while (const ObjectPtr parent = Find(objects, Find(objects, solid.root)->Parent()))
    solid.root = parent->id;
  const Frame frame = WorldFrame(objects, object);
  for (const Part& part : asset.parts) {
    const auto [low, high] = PartBox(part);
    const Vec3 half = (high - low) * 0.5;
    solid.boxes.push_back({PointToWorld(frame, low + half), frame.x_axis * half.x,
                           frame.y_axis * half.y, frame.z_axis * half.z});
  }
  return solid;
}

// How far the one would have to move for the two to come apart; not above 0 when they are. Boxes
// are apart if they are so along one of the axes below.
double Depth(const SolidBox& a, const SolidBox& b) {
  const Vec3 away = b.origin - a.origin;
  const std::array<Vec3, 3> of_a = {a.x_axis, a.y_axis, a.z_axis};
  const std::array<Vec3, 3> of_b = {b.x_axis, b.y_axis, b.z_axis};
  double depth = std::numeric_limits<double>::max();
  const auto try_axis = [&](const Vec3& axis) {
    const double length = Length(axis);
    if (depth <= kTouch || length < 1e-9) return;
    double overlap = -std::abs(Dot(away, axis));
    for (const auto& own : {of_a, of_b})
      for (const Vec3& side : own) overlap += std::abs(Dot(side, axis));
    depth = std::min(depth, overlap / length);
  };
  for (const auto& own : {of_a, of_b})
    for (std::size_t at = 0; at < 3; ++at) try_axis(Cross(own[at], own[(at + 1) % 3]));
  for (const Vec3& one : of_a)
    for (const Vec3& other : of_b) try_axis(Cross(one, other));
  return depth;
}

bool Meet(const Solid& a, const Solid& b) {
  // Assets reach less than this far from their origins, at the largest scale.
  constexpr double kFar = 100;
  if (Length(a.boxes.front().origin - b.boxes.front().origin) > kFar) return false;
  return std::any_of(a.boxes.begin(), a.boxes.end(), [&](const SolidBox& one) {
    return std::any_of(b.boxes.begin(), b.boxes.end(),
                       [&](const SolidBox& other) { return Depth(one, other) > kTouch; });
  });
}

// The objects that the draft created, or whose place it changed.
std::vector<std::int64_t> Moved(const Draft& draft) {
  const Objects& before = draft.world->objects;
  std::vector<std::int64_t> touched;
  for (const auto& [id, object] : draft.objects)
    if (Find(before, id) != object) touched.push_back(id);
  std::vector<std::int64_t> moved = WithDescendants(draft.objects, touched);
  std::erase_if(moved, [&](std::int64_t id) {
    const ObjectPtr old = Find(before, id);
    return old != nullptr &&
           WorldFrame(before, *old) == WorldFrame(draft.objects, *Find(draft.objects, id));
  });
  return moved;
}

}  // namespace

void WarnOfOverlaps(const Draft& draft, Json& result) {
  const std::vector<std::int64_t> moved = Moved(draft);
  if (moved.empty()) return;
  std::vector<Solid> solids;
  for (const auto& [id, object] : draft.objects) {
    const Asset* asset = FindAsset(object->fields.At("asset").text);
    if (asset != nullptr && Shown(draft.objects, *object))
      solids.push_back(MakeSolid(draft.objects, *object, *asset));
  }
  const auto has_moved = [&](const Solid& solid) {
    return std::binary_search(moved.begin(), moved.end(), solid.id);
  };
  Json warnings = Json::Array();
  std::set<std::pair<std::int64_t, std::int64_t>> told;  // Roots; once for a house with its roof.
  for (const Solid& solid : solids) {
    if (!has_moved(solid)) continue;
    for (const Solid& other : solids) {
      // Of two that have moved the later one tells.
      if (other.root == solid.root || (other.id > solid.id && has_moved(other))) continue;
      if (!Meet(solid, other) || !told.emplace(solid.root, other.root).second) continue;
      warnings.Add(Json::Text("O objeto " + std::to_string(solid.id) + " (" + solid.asset +
                              ") entra no objeto " + std::to_string(other.id) + " (" + other.asset +
                              ")."));
    }
  }
  if (!warnings.items.empty()) result.Set("warnings", std::move(warnings));
}

}  // namespace zorvik::sample_editor
