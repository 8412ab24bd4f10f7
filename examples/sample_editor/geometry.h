#pragma once

#include <cmath>

#include "core/json.h"

namespace zorvik::sample_editor {

// Metres; +X east, +Y up, -Z north.
struct Vec3 {
  double x = 0;
  double y = 0;
  double z = 0;

  bool operator==(const Vec3&) const = default;
};

// In the header, since pictures are made of millions of these.
constexpr Vec3 operator+(const Vec3& a, const Vec3& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
constexpr Vec3 operator-(const Vec3& a, const Vec3& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
constexpr Vec3 operator*(const Vec3& a, double factor) {
  return {a.x * factor, a.y * factor, a.z * factor};
}
// Each part by its own, as light by a colour.
constexpr Vec3 Times(const Vec3& a, const Vec3& b) {
  return {a.x * b.x, a.y * b.y, a.z * b.z};
}
constexpr Vec3 Mixed(const Vec3& a, const Vec3& b, double share) {
  return a + (b - a) * share;
}
constexpr double Dot(const Vec3& a, const Vec3& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
constexpr Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double Length(const Vec3& a) {
  return std::sqrt(Dot(a, a));
}
inline Vec3 Normalized(const Vec3& a) {
  return a * (1 / Length(a));
}

// The space of one object, seen from the world: where its origin lies and what its three axes,
// scale included, have become.
struct Frame {
  Vec3 origin;
  Vec3 x_axis{1, 0, 0};
  Vec3 y_axis{0, 1, 0};
  Vec3 z_axis{0, 0, 1};

  bool operator==(const Frame&) const = default;
};

Vec3 DirectionToWorld(const Frame& frame, const Vec3& local);
Vec3 PointToWorld(const Frame& frame, const Vec3& local);
// The way back. No axis of the frame may have lost its length.
Vec3 DirectionToLocal(const Frame& frame, const Vec3& world);
// A space inside `outer`; angles in degrees, turned in the order yaw, pitch, roll.
Frame Inside(const Frame& outer, const Vec3& position, const Vec3& angles, const Vec3& scale);

// {x, y, z}; what is missing there takes the component of `fallback`.
core::Json VectorJson(const Vec3& vector);
Vec3 ReadVector(const core::Json& value, const Vec3& fallback);

}  // namespace zorvik::sample_editor
