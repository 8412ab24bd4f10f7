#pragma once

#include "examples/sample_editor/png.h"
#include "examples/sample_editor/world.h"

namespace zorvik::sample_editor {

struct Camera {
  Vec3 position;
  Vec3 target;
  double fov = 55;  // Degrees, vertical.
};

// The terrain, the sea and a box for each shown object, seen through the camera. `lit` shades
// surfaces by their slant towards the sun; otherwise they have their plain colour.
Picture DrawWorld(const Objects& objects, const Camera& camera, std::uint32_t width,
                  std::uint32_t height, bool lit);

}  // namespace zorvik::sample_editor
