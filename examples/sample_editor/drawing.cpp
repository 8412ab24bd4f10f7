#include "examples/sample_editor/drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "examples/sample_editor/raster.h"
#include "examples/sample_editor/scene.h"
#include "examples/sample_editor/terrain.h"

namespace zorvik::sample_editor {

namespace {

constexpr int kSamples = 2;  // In each direction of a pixel.
constexpr std::size_t kPixelSamples = std::size_t{kSamples} * kSamples;
constexpr int kShadowPoints = 2048;
constexpr double kNearest = 0.1;
constexpr double kHazeDistance = 1100;  // Where the haze has taken half of a colour.
constexpr double kSunAway = 4000;
constexpr std::uint32_t kGround = 0xFFFFFFFF;  // Other names are those of facets.
constexpr std::uint32_t kSea = 0xFFFFFFFE;
constexpr std::uint32_t kSky = 0xFFFFFFFD;

constexpr Vec3 kZenith{0.36, 0.58, 0.84};
constexpr Vec3 kHorizon{0.87, 0.91, 0.93};
constexpr Vec3 kDeep{0.10, 0.29, 0.42};
constexpr Vec3 kShallow{0.36, 0.62, 0.60};

const Vec3 kSun = Normalized({-0.60, 0.60, 0.52});

Vec3 Daylight(const Vec3& colour, const Vec3& normal, double sun) {
  const Vec3 sky = Mixed({0.42, 0.39, 0.35}, {0.53, 0.59, 0.69}, 0.5 + 0.5 * normal.y);
  return Times(colour, sky + Vec3{0.74, 0.65, 0.49} * (sun * std::max(0.0, Dot(normal, kSun))));
}

Vec3 SkyColour(double up) {
  const double low = 1 - std::clamp(up, 0.0, 1.0);
  return Mixed(kZenith, kHorizon, low * low * low);
}

// Few enough steps for even surfaces to stay even, and the file small.
std::uint8_t Brightness(double share) {
  constexpr int kStep = 4;
  const long steps = std::lround(std::clamp(share, 0.0, 1.0) * 255 / kStep);
  return static_cast<std::uint8_t>(std::min(255L, steps * kStep));
}

// How points of the world come to lie on a picture.
struct View {
  View(const Camera& camera, int width, int height)
      : held(CameraFrame(camera)),
        focal(height / 2.0 / std::tan(camera.fov * std::numbers::pi / 360)),
        middle_x(width / 2.0),
        middle_y(height / 2.0) {}

  // From the eye to that point of the picture, one metre forward.
  Vec3 Ray(double x, double y) const {
    return held.x_axis * ((x - middle_x) / focal) + held.y_axis * ((middle_y - y) / focal) -
           held.z_axis;
  }

  // How near the sea's surface is in a line of the picture; the camera is never tilted sideways.
  double SeaNearness(double y) const { return Ray(middle_x, y).y / (kSeaLevel - held.origin.y); }

  Frame held;
  double focal;  // In points: the size of one metre one metre away.
  double middle_x;
  double middle_y;
};

void DrawSeen(Raster& raster, const View& view, const std::array<Vec3, 3>& corners,
              std::uint32_t name) {
  std::array<Vec3, 3> seen;
  for (std::size_t at = 0; at < 3; ++at) {
    const Vec3 away = corners[at] - view.held.origin;
    seen[at] = {Dot(away, view.held.x_axis), Dot(away, view.held.y_axis),
                -Dot(away, view.held.z_axis)};
  }
  // What lies behind the eye is cut off, which can leave four corners.
  std::array<Vec3, 4> placed;
  std::size_t count = 0;
  const auto place = [&](const Vec3& point) {
    placed[count++] = {view.middle_x + point.x / point.z * view.focal,
                       view.middle_y - point.y / point.z * view.focal, 1 / point.z};
  };
  for (std::size_t at = 0; at < 3; ++at) {
    const Vec3& a = seen[at];
    const Vec3& b = seen[(at + 1) % 3];
    if (a.z >= kNearest) place(a);
    if ((a.z >= kNearest) != (b.z >= kNearest)) place(Mixed(a, b, (kNearest - a.z) / (b.z - a.z)));
  }
  for (std::size_t at = 2; at < count; ++at)
    raster.Draw({placed[0], placed[at - 1], placed[at]}, name);
}

void DrawGround(Raster& raster, const View& view) {
  for (int row = 0; row + 1 < kTerrainResolution; ++row) {
    for (int column = 0; column + 1 < kTerrainResolution; ++column) {
      const Vec3 corner = Ground(column + 1, row + 1).point;
      DrawSeen(raster, view, {Ground(column, row).point, Ground(column + 1, row).point, corner},
               kGround);
      DrawSeen(raster, view, {Ground(column, row).point, corner, Ground(column, row + 1).point},
               kGround);
    }
  }
}

// What the sun sees of the things around a point; all else lies in its shadow.
class SunMap {
 public:
  SunMap(const Scene& scene, const Vec3& centre, double reach)
      : points(kShadowPoints, kShadowPoints),
        middle(centre),
        per_metre(kShadowPoints / 2.0 / reach) {
    for (std::size_t at = 0; at < scene.shadowless; ++at) {
      const auto& [a, b, c] = scene.facets[at].corners;
      points.Draw({Place(a), Place(b), Place(c)}, 0);
    }
  }
  // How much of the sun comes to a point of a surface, 0 to 1.
  double Reaches(const Vec3& point, const Vec3& normal) const {
    const Vec3 at = Place(point + (normal + kSun) * (0.02 + 0.8 / per_metre));
    // The four points around it, the nearer ones with more weight.
    const double left = std::floor(at.x - 0.5);
    const double top = std::floor(at.y - 0.5);
    double sun = 0;
    for (const double x : {left, left + 1}) {
      for (const double y : {top, top + 1}) {
        const bool outside = x < 0 || y < 0 || x >= kShadowPoints || y >= kShadowPoints;
        if (outside ||
            points.nearness[points.Index(static_cast<int>(x), static_cast<int>(y))] <= at.z)
          sun += (1 - std::abs(at.x - 0.5 - x)) * (1 - std::abs(at.y - 0.5 - y));
      }
    }
    return sun;
  }

 private:
  Vec3 Place(const Vec3& point) const {
    const Vec3 away = point - middle;
    return {kShadowPoints / 2.0 + Dot(away, across) * per_metre,
            kShadowPoints / 2.0 + Dot(away, down) * per_metre, kSunAway + Dot(away, kSun)};
  }

  Raster points;
  Vec3 middle;
  double per_metre;
  Vec3 across = Normalized(Cross(kSun, {0, 1, 0}));
  Vec3 down = Cross(kSun, across);
};

// Finds the colour of each point.
class Painter {
 public:
  Painter(const Scene& all, const View& from, const SunMap& map, bool shaded)
      : scene(all), view(from), sun(map), lit(shaded) {}

  Vec3 Colour(std::uint32_t name, const Vec3& ray, double near) const {
    if (name == kSky) return SkyColour(ray.y / Length(ray));
    const Vec3 point = view.held.origin + ray * (1 / near);
    const Vec3 colour = name == kSea      ? SeaColour(point)
                        : name == kGround ? GroundColour(point)
                                          : FacetColour(scene.facets[name], point);
    if (!lit) return colour;
    const double distance = Dot(point - view.held.origin, point - view.held.origin);
    return Mixed(colour, kHorizon, distance / (distance + kHazeDistance * kHazeDistance));
  }

 private:
  Vec3 FacetColour(const Facet& facet, const Vec3& point) const {
    if (!lit) return facet.colour;
    return Daylight(facet.colour, facet.normal, sun.Reaches(point, facet.normal));
  }

  Vec3 GroundColour(const Vec3& point) const {
    const double x =
        std::clamp((point.x + kTerrainHalf) / kTerrainStep, 0.0, kTerrainResolution - 1.001);
    const double z =
        std::clamp((point.z + kTerrainHalf) / kTerrainStep, 0.0, kTerrainResolution - 1.001);
    const int column = static_cast<int>(x);
    const int row = static_cast<int>(z);
    Vec3 colour;
    Vec3 normal;
    for (const int right : {0, 1}) {
      for (const int down : {0, 1}) {
        const GroundPoint& corner = Ground(column + right, row + down);
        const double share =
            (right != 0 ? x - column : column + 1 - x) * (down != 0 ? z - row : row + 1 - z);
        colour = colour + corner.colour * share;
        normal = normal + corner.normal * share;
      }
    }
    return lit ? Daylight(colour, normal, sun.Reaches(point, normal)) : colour;
  }

  Vec3 SeaColour(const Vec3& point) const {
    const double depth =
        InsideTerrain(point.x, point.z) ? kSeaLevel - GroundHeight(point.x, point.z) : 9;
    const Vec3 body = Mixed(kShallow, kDeep, 1 - 1 / (1 + std::max(0.0, depth) / 1.5));
    if (!lit) return body;
    const Vec3 away = Normalized(point - view.held.origin);
    const double calm = 1 / (1 + Length(point - view.held.origin) / 60);
    const double wave = std::sin(point.x * 0.9 + 1.7 * std::sin(point.z * 0.35)) *
                        std::sin(point.z * 1.3 + point.x * 0.21);
    const Vec3 normal = Normalized({0.05 * wave * calm, 1, 0.05 * wave * calm});
    const double facing = std::clamp(-Dot(away, normal), 0.0, 1.0);
    const double glancing = (1 - facing) * (1 - facing);
    const double mirror = 0.03 + 0.75 * glancing * glancing;
    const Vec3 bounced = away - normal * (2 * Dot(away, normal));
    const double lightness = 0.75 + 0.25 * sun.Reaches(point, {0, 1, 0});
    return Mixed(body * lightness, SkyColour(bounced.y), mirror);
  }

  const Scene& scene;
  const View& view;
  const SunMap& sun;
  bool lit;
};

}  // namespace

Frame CameraFrame(const Camera& camera) {
  const Vec3 back = Normalized(camera.position - camera.target);
  // Straight up or down, the picture's top is the north.
  const Vec3 right =
      Normalized(Cross(std::abs(back.y) > 0.9999 ? Vec3{0, 0, -1} : Vec3{0, 1, 0}, back));
  return {camera.position, right, Cross(back, right), back};
}

Picture DrawWorld(const Objects& objects, const Camera& camera, std::uint32_t width,
                  std::uint32_t height, bool lit) {
  const Scene scene = MakeScene(objects);
  const View view(camera, static_cast<int>(width) * kSamples, static_cast<int>(height) * kSamples);
  Raster seen(static_cast<int>(width) * kSamples, static_cast<int>(height) * kSamples);
  DrawGround(seen, view);
  for (std::size_t at = 0; at < scene.facets.size(); ++at)
    DrawSeen(seen, view, scene.facets[at].corners, static_cast<std::uint32_t>(at));
  const double distance = Length(camera.target - camera.position);
  const SunMap sun(scene, camera.target, std::clamp(1.5 * distance, 30.0, 380.0));
  const Painter painter(scene, view, sun, lit);

  Picture picture{width, height, {}};
  picture.pixels.reserve(std::size_t{3} * width * height);
  for (int row = 0; row < seen.height; row += kSamples) {
    std::array<double, kSamples> water{};
    for (int line = 0; line < kSamples; ++line)
      water[static_cast<std::size_t>(line)] = view.SeaNearness(row + line + 0.5);
    for (int column = 0; column < seen.width; column += kSamples) {
      // What several samples of a pixel show is painted once.
      std::array<std::uint32_t, kPixelSamples> names{};
      std::array<Vec3, kPixelSamples> colours;
      std::size_t known = 0;
      Vec3 sum;
      for (int sample = 0; sample < kSamples * kSamples; ++sample) {
        const int x = column + sample % kSamples;
        const int y = row + sample / kSamples;
        double near = seen.nearness[seen.Index(x, y)];
        std::uint32_t name = near > 0 ? seen.names[seen.Index(x, y)] : kSky;
        if (const double sea = water[static_cast<std::size_t>(y - row)]; sea > near) {
          near = sea;
          name = kSea;
        }
        std::size_t at = 0;
        while (at < known && names[at] != name) ++at;
        if (at == known) {
          names[known] = name;
          colours[known++] = painter.Colour(name, view.Ray(x + 0.5, y + 0.5), near);
        }
        sum = sum + colours[at];
      }
      for (const double channel : {sum.x, sum.y, sum.z})
        picture.pixels.push_back(Brightness(channel / (kSamples * kSamples)));
    }
  }
  return picture;
}

}  // namespace zorvik::sample_editor
