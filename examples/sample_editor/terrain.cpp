#include "examples/sample_editor/terrain.h"

#include <algorithm>
#include <cmath>

namespace zorvik::sample_editor {

bool InsideTerrain(double x, double z) {
  return std::abs(x) <= kTerrainHalf && std::abs(z) <= kTerrainHalf;
}

double GroundHeight(double x, double z) {
  return 9 + 8 * std::sin(x / 61) * std::cos(z / 74) + 3 * std::sin((x + z) / 37) - z / 64;
}

Vec3 GroundNormal(double x, double z) {
  constexpr double kReach = 0.5;
  return Normalized({GroundHeight(x - kReach, z) - GroundHeight(x + kReach, z), 2 * kReach,
                     GroundHeight(x, z - kReach) - GroundHeight(x, z + kReach)});
}

double GroundSlope(double x, double z) {
  const Vec3 normal = GroundNormal(x, z);
  return std::hypot(normal.x, normal.z) / normal.y;
}

std::array<double, 3> LayerWeights(double x, double z) {
  const double rock = std::clamp((GroundSlope(x, z) - 0.12) / 0.1, 0.0, 1.0);
  const double sand = std::clamp((kSeaLevel + 2 - GroundHeight(x, z)) / 1.5, 0.0, 1.0);
  return {sand * (1 - rock), (1 - sand) * (1 - rock), rock};
}

const TerrainStatistics& GroundStatistics() {
  static const TerrainStatistics statistics = [] {
    TerrainStatistics made{GroundHeight(0, 0), GroundHeight(0, 0), 0};
    for (int row = 0; row < kTerrainResolution; ++row) {
      for (int column = 0; column < kTerrainResolution; ++column) {
        const double height =
            GroundHeight(column * kTerrainStep - kTerrainHalf, row * kTerrainStep - kTerrainHalf);
        made.min = std::min(made.min, height);
        made.max = std::max(made.max, height);
        made.mean += height / (kTerrainResolution * kTerrainResolution);
      }
    }
    return made;
  }();
  return statistics;
}

}  // namespace zorvik::sample_editor
