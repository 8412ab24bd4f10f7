#include "examples/sample_editor/drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "examples/sample_editor/terrain.h"

namespace zorvik::sample_editor {

namespace {

// The palette: kShades shades of each colour, the sky first.
enum Colour : std::uint8_t { kSky, kSea, kSand, kGrass, kRock, kLeaf, kWall, kColours };
constexpr int kShades = 16;
constexpr std::uint8_t kColourValues[kColours][3] = {
    {150, 190, 230}, {60, 110, 170}, {220, 205, 150}, {110, 160, 80},
    {140, 135, 130}, {50, 110, 60},  {190, 120, 90}};
constexpr double kNearest = 0.1;
constexpr double kCanvasLimit = 1e6;  // Beyond this a corner is too far off the picture to draw.

class Canvas {
 public:
  Canvas(const Camera& camera, std::uint32_t width, std::uint32_t height, bool shaded)
      : eye(camera.position), lit(shaded) {
    forward = Normalized(camera.target - camera.position);
    // Straight up or down, the picture's top is the north.
    const Vec3 up = std::abs(forward.y) > 0.9999 ? Vec3{0, 0, -1} : Vec3{0, 1, 0};
    right = Normalized(Cross(forward, up));
    above = Cross(right, forward);
    focal = height / 2.0 / std::tan(camera.fov * std::numbers::pi / 360);
    picture.width = width;
    picture.height = height;
    picture.pixels.assign(std::size_t{width} * height, kSky * kShades + kShades - 1);
    nearness.assign(picture.pixels.size(), 0.0F);
    for (const auto& value : kColourValues) {
      for (int shade = 1; shade <= kShades; ++shade) {
        picture.palette.push_back({static_cast<std::uint8_t>(value[0] * shade / kShades),
                                   static_cast<std::uint8_t>(value[1] * shade / kShades),
                                   static_cast<std::uint8_t>(value[2] * shade / kShades)});
      }
    }
  }

  void Quad(const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& d, Colour colour) {
    const std::uint8_t index = Shade(Cross(b - a, c - a), colour);
    Triangle({Project(a), Project(b), Project(c)}, index);
    Triangle({Project(a), Project(c), Project(d)}, index);
  }

  Picture picture;

 private:
  // On the picture: across, down, and one over the depth.
  Vec3 Project(const Vec3& point) const {
    const Vec3 seen = point - eye;
    const double depth = Dot(seen, forward);
    if (!(depth > kNearest)) return {0, 0, -1};
    return {picture.width / 2.0 + Dot(seen, right) / depth * focal,
            picture.height / 2.0 - Dot(seen, above) / depth * focal, 1 / depth};
  }

  std::uint8_t Shade(const Vec3& normal, Colour colour) const {
    const Vec3 sun = Normalized({0.4, 0.8, 0.45});
    const double length = Length(normal);
    double light = length > 0 ? std::abs(Dot(normal, sun)) / length : 1;
    if (!lit) light = 1;
    return static_cast<std::uint8_t>(colour * kShades + static_cast<int>((kShades - 1) * light));
  }

  void Triangle(const std::array<Vec3, 3>& corner, std::uint8_t index) {
    for (const Vec3& at : corner)
      if (at.z <= 0 || !(std::abs(at.x) < kCanvasLimit) || !(std::abs(at.y) < kCanvasLimit)) return;
    const auto [a, b, c] = corner;
    const double area = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    if (area == 0) return;
    const int left = std::max(0, static_cast<int>(std::min({a.x, b.x, c.x})));
    const int last_x =
        std::min(static_cast<int>(picture.width) - 1, static_cast<int>(std::max({a.x, b.x, c.x})));
    const int top = std::max(0, static_cast<int>(std::min({a.y, b.y, c.y})));
    const int last_y =
        std::min(static_cast<int>(picture.height) - 1, static_cast<int>(std::max({a.y, b.y, c.y})));
    for (int row = top; row <= last_y; ++row) {
      for (int column = left; column <= last_x; ++column) {
        const double x = column + 0.5;
        const double y = row + 0.5;
        const double u = ((x - a.x) * (c.y - a.y) - (y - a.y) * (c.x - a.x)) / area;
        const double v = ((b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x)) / area;
        if (u < 0 || v < 0 || u + v > 1) continue;
        const auto near = static_cast<float>(a.z + u * (b.z - a.z) + v * (c.z - a.z));
        const std::size_t pixel =
            static_cast<std::size_t>(row) * picture.width + static_cast<std::size_t>(column);
        if (near <= nearness[pixel]) continue;
        nearness[pixel] = near;
        picture.pixels[pixel] = index;
      }
    }
  }

  Vec3 eye;
  Vec3 forward;
  Vec3 right;
  Vec3 above;
  double focal = 1;
  bool lit;
  std::vector<float> nearness;
};

Colour GroundColour(double x, double z) {
  const std::array<double, 3> weights = LayerWeights(x, z);
  const auto heaviest = std::max_element(weights.begin(), weights.end()) - weights.begin();
  return static_cast<Colour>(kSand + heaviest);
}

void DrawGround(Canvas& canvas) {
  const auto point = [](double x, double z) { return Vec3{x, GroundHeight(x, z), z}; };
  for (int row = 0; row + 1 < kTerrainResolution; ++row) {
    for (int column = 0; column + 1 < kTerrainResolution; ++column) {
      const double x = column * kTerrainStep - kTerrainHalf;
      const double z = row * kTerrainStep - kTerrainHalf;
      const double east = x + kTerrainStep;
      const double south = z + kTerrainStep;
      canvas.Quad(point(x, z), point(east, z), point(east, south), point(x, south),
                  GroundColour(x, z));
      canvas.Quad({x, kSeaLevel, z}, {east, kSeaLevel, z}, {east, kSeaLevel, south},
                  {x, kSeaLevel, south}, kSea);
    }
  }
}

void DrawObject(Canvas& canvas, const Objects& objects, const Object& object) {
  const std::string& name = object.fields.At("asset").text;
  const Asset* asset = FindAsset(name);
  if (asset == nullptr) return;
  const Colour colour = name == "zorvik_pinheiro" || name == "zorvik_carvalho" ? kLeaf
                        : name == "zorvik_rocha"                               ? kRock
                                                                               : kWall;
  const Frame frame = WorldFrame(objects, object);
  const auto corner = [&](bool east, bool up, bool south) {
    return PointToWorld(frame, {east ? asset->box_max.x : asset->box_min.x,
                                up ? asset->box_max.y : asset->box_min.y,
                                south ? asset->box_max.z : asset->box_min.z});
  };
  for (const bool side : {false, true}) {
    canvas.Quad(corner(side, false, false), corner(side, true, false), corner(side, true, true),
                corner(side, false, true), colour);
    canvas.Quad(corner(false, side, false), corner(true, side, false), corner(true, side, true),
                corner(false, side, true), colour);
    canvas.Quad(corner(false, false, side), corner(true, false, side), corner(true, true, side),
                corner(false, true, side), colour);
  }
}

}  // namespace

Picture DrawWorld(const Objects& objects, const Camera& camera, std::uint32_t width,
                  std::uint32_t height, bool lit) {
  Canvas canvas(camera, width, height, lit);
  DrawGround(canvas);
  for (const auto& [id, object] : objects)
    if (Shown(objects, *object)) DrawObject(canvas, objects, *object);
  return std::move(canvas.picture);
}

}  // namespace zorvik::sample_editor
