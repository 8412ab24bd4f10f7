#pragma once

#include <array>

#include "examples/sample_editor/geometry.h"

// The ground of the sample world: a formula instead of a height map, so that it needs no file.
namespace zorvik::sample_editor {

inline constexpr double kTerrainHalf = 256;  // It reaches this far from the origin, each way.
inline constexpr int kTerrainResolution = 129;
inline constexpr double kTerrainStep = 2 * kTerrainHalf / (kTerrainResolution - 1);
inline constexpr double kSeaLevel = 2;
inline constexpr std::array<const char*, 3> kLayers = {"areia", "grama", "rocha"};

struct TerrainStatistics {
  double min = 0;
  double max = 0;
  double mean = 0;
};

bool InsideTerrain(double x, double z);
// The formula goes on outside, where things can stand all the same.
double GroundHeight(double x, double z);
// Rise per metre.
double GroundSlope(double x, double z);
Vec3 GroundNormal(double x, double z);
// The weight of each of kLayers; together 1.
std::array<double, 3> LayerWeights(double x, double z);
// Over the points of the terrain's own resolution.
const TerrainStatistics& GroundStatistics();

}  // namespace zorvik::sample_editor
