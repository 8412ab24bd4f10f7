#include "examples/sample_editor/raster.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zorvik::sample_editor {

Raster::Raster(int across, int down)
    : width(across), height(down), nearness(Index(0, down), 0.0F), names(nearness.size(), 0) {}

void Raster::Draw(const std::array<Vec3, 3>& corners, std::uint32_t name) {
  const auto& [a, b, c] = corners;
  const double area = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
  if (!(std::abs(area) > 0)) return;
  // The shares of b and c in a point are even functions of its place, and so is the nearness.
  const Vec3 share_b{(c.y - a.y) / area, (a.x - c.x) / area, 0};
  const Vec3 share_c{(a.y - b.y) / area, (b.x - a.x) / area, 0};
  const auto clamped = [](double value, int size) {
    return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(size)));
  };
  const int left = clamped(std::min({a.x, b.x, c.x}), width);
  const int right = clamped(std::ceil(std::max({a.x, b.x, c.x})), width);
  const int top = clamped(std::min({a.y, b.y, c.y}), height);
  const int bottom = clamped(std::ceil(std::max({a.y, b.y, c.y})), height);
  for (int row = top; row < bottom; ++row) {
    // The columns where none of the three shares is below 0.
    double begin = left;
    double end = right;
    const Vec3 zero{0.5 - a.x, row + 0.5 - a.y, 0};
    const double u = Dot(share_b, zero);
    const double v = Dot(share_c, zero);
    for (const auto& [share, step] : {std::pair{u, share_b.x}, std::pair{v, share_c.x},
                                      std::pair{1 - u - v, -share_b.x - share_c.x}})
      if (step > 0)
        begin = std::max(begin, std::ceil(-share / step));
      else if (step < 0)
        end = std::min(end, std::floor(-share / step) + 1);
      else if (share < 0)
        end = begin;
    if (begin >= end) continue;
    const double step = share_b.x * (b.z - a.z) + share_c.x * (c.z - a.z);
    const double start = a.z + u * (b.z - a.z) + v * (c.z - a.z);
    for (int column = static_cast<int>(begin); column < end; ++column) {
      const std::size_t at = Index(column, row);
      const auto near = static_cast<float>(start + column * step);
      if (near <= nearness[at]) continue;
      nearness[at] = near;
      names[at] = name;
    }
  }
}

}  // namespace zorvik::sample_editor
