#include "examples/sample_editor/geometry.h"

#include <cmath>
#include <numbers>

namespace zorvik::sample_editor {

using core::Json;

Vec3 DirectionToWorld(const Frame& frame, const Vec3& local) {
  return frame.x_axis * local.x + frame.y_axis * local.y + frame.z_axis * local.z;
}

Vec3 PointToWorld(const Frame& frame, const Vec3& local) {
  return frame.origin + DirectionToWorld(frame, local);
}

Vec3 DirectionToLocal(const Frame& frame, const Vec3& world) {
  const Vec3 yz = Cross(frame.y_axis, frame.z_axis);
  const double volume = Dot(frame.x_axis, yz);
  return {Dot(world, yz) / volume, Dot(frame.x_axis, Cross(world, frame.z_axis)) / volume,
          Dot(frame.x_axis, Cross(frame.y_axis, world)) / volume};
}

Frame Inside(const Frame& outer, const Vec3& position, const Vec3& angles, const Vec3& scale) {
  const double radians = std::numbers::pi / 180;
  const double sp = std::sin(angles.x * radians), cp = std::cos(angles.x * radians);
  const double sy = std::sin(angles.y * radians), cy = std::cos(angles.y * radians);
  const double sr = std::sin(angles.z * radians), cr = std::cos(angles.z * radians);
  const Vec3 x_axis{cy * cr + sy * sp * sr, cp * sr, -sy * cr + cy * sp * sr};
  const Vec3 y_axis{-cy * sr + sy * sp * cr, cp * cr, sy * sr + cy * sp * cr};
  const Vec3 z_axis{sy * cp, -sp, cy * cp};
  return {PointToWorld(outer, position), DirectionToWorld(outer, x_axis * scale.x),
          DirectionToWorld(outer, y_axis * scale.y), DirectionToWorld(outer, z_axis * scale.z)};
}

Json VectorJson(const Vec3& vector) {
  return Json::Object({{"x", vector.x}, {"y", vector.y}, {"z", vector.z}});
}

Vec3 ReadVector(const Json& value, const Vec3& fallback) {
  const auto component = [&](const char* key, double otherwise) {
    return value.Has(key) ? value.At(key).number : otherwise;
  };
  return {component("x", fallback.x), component("y", fallback.y), component("z", fallback.z)};
}

}  // namespace zorvik::sample_editor
