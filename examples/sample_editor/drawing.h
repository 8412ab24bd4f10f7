#pragma once

#include "examples/sample_editor/png.h"
#include "examples/sample_editor/world.h"

namespace zorvik::sample_editor {

struct Camera {
  Vec3 position;
  Vec3 target;
  double fov = 55;  // Degrees, vertical.
};

// How the camera is held: x to the right of the picture, y up, z back from the target.
Frame CameraFrame(const Camera& camera);

// The terrain, the sea and the shown objects under a clear sky, seen through the camera. `lit` has
// sunlight, shadows, reflections and haze; without it everything has its plain colour. The same
// world gives the same picture.
Picture DrawWorld(const Objects& objects, const Camera& camera, std::uint32_t width,
                  std::uint32_t height, bool lit);

}  // namespace zorvik::sample_editor
