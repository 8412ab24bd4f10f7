#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "authoring/catalog.h"
#include "core/editor_registry.h"
#include "core/file_write.h"
#include "core/process.h"
#include "examples/sample_editor/drawing.h"
#include "examples/sample_editor/errors.h"
#include "examples/sample_editor/operations.h"
#include "examples/sample_editor/terrain.h"

namespace zorvik::sample_editor {

using core::Json;

namespace {

constexpr double kDefaultFov = 55;
constexpr double kMargin = 0.5;  // Metres; a single point has to be seen from somewhere.
constexpr double kAirAround = 1.06;
constexpr double kEyeLevel = 1.6;

void Enclose(std::pair<Vec3, Vec3>& box, const Vec3& point) {
  box.first = {std::min(box.first.x, point.x), std::min(box.first.y, point.y),
               std::min(box.first.z, point.z)};
  box.second = {std::max(box.second.x, point.x), std::max(box.second.y, point.y),
                std::max(box.second.z, point.z)};
}

// The direction from what is framed to the camera.
Vec3 ViewDirection(const std::string& view, double elevation) {
  Vec3 flat{std::numbers::sqrt2 / 2, 0, std::numbers::sqrt2 / 2};  // South-east, for "iso".
  if (view == "north") flat = {0, 0, -1};
  if (view == "south" || view == "top") flat = {0, 0, 1};
  if (view == "east") flat = {1, 0, 0};
  if (view == "west") flat = {-1, 0, 0};
  const double angle = elevation * std::numbers::pi / 180;
  return flat * std::cos(angle) + Vec3{0, std::sin(angle), 0};
}

bool FramedBox(const Objects& objects, const Json& frame, std::pair<Vec3, Vec3>& box, Json& error) {
  const double far_away = std::numeric_limits<double>::max();
  box = {{far_away, far_away, far_away}, {-far_away, -far_away, -far_away}};
  std::vector<std::int64_t> ids;
  for (const Json& id : frame.At("ids").items) {
    ids.push_back(id.IntOr(0));
    if (Find(objects, ids.back()) != nullptr) continue;
    error = ItemError("not_found", "frame.ids", ids.size() - 1, ids.back(),
                      "O objeto " + std::to_string(ids.back()) + " nao existe.", "");
    return false;
  }
  for (const std::int64_t id : WithDescendants(objects, ids)) {
    const auto [low, high] = WorldBox(objects, *Find(objects, id));
    Enclose(box, low);
    Enclose(box, high);
  }
  const Json& bounds = frame.At("bounds");
  if (frame.Has("bounds") || ids.empty()) {
    for (const double x : {bounds.Has("min_x") ? bounds.At("min_x").number : -kTerrainHalf,
                           bounds.Has("max_x") ? bounds.At("max_x").number : kTerrainHalf})
      for (const double z : {bounds.Has("min_z") ? bounds.At("min_z").number : -kTerrainHalf,
                             bounds.Has("max_z") ? bounds.At("max_z").number : kTerrainHalf})
        Enclose(box, {x, GroundHeight(x, z), z});
  }
  return true;
}

// Moves the camera, without turning it, to where the box just fits into its picture.
void FillPicture(const std::pair<Vec3, Vec3>& box, double aspect, Camera& camera) {
  const Frame held = CameraFrame(camera);
  const double half = std::tan(camera.fov * std::numbers::pi / 360);
  const Vec3 size = (box.second - box.first) * 0.5 + Vec3{kMargin, kMargin, kMargin};
  double distance = 0;
  Vec3 target = camera.target;
  for (const auto& [axis, slope] :
       {std::pair{held.x_axis, half * aspect}, std::pair{held.y_axis, half}}) {
    // A corner is on the rim at a distance of its own to either side; the camera goes between.
    double low = -std::numeric_limits<double>::max();
    double high = low;
    for (unsigned corner = 0; corner < 8; ++corner) {
      const Vec3 away{(corner & 1U) != 0 ? size.x : -size.x, (corner & 2U) != 0 ? size.y : -size.y,
                      (corner & 4U) != 0 ? size.z : -size.z};
      const double nearer = Dot(away, held.z_axis) * slope;
      high = std::max(high, Dot(away, axis) + nearer);
      low = std::max(low, nearer - Dot(away, axis));
    }
    target = target + axis * ((high - low) / 2);
    distance = std::max(distance, (high + low) / 2 / slope);
  }
  camera.target = target;
  camera.position = target + held.z_axis * (distance * kAirAround);
  const double ground = std::max(GroundHeight(camera.position.x, camera.position.z), kSeaLevel);
  camera.position.y = std::max(camera.position.y, ground + kEyeLevel);
}

bool ReadCamera(const Objects& objects, const Json& args, double aspect, Camera& camera,
                Json& error) {
  if (args.Has("camera")) {
    const Json& given = args.At("camera");
    camera.position = ReadVector(given.At("position"), {});
    camera.target = ReadVector(given.At("target"), {});
    camera.fov = given.Has("fov") ? given.At("fov").number : kDefaultFov;
    const double distance = Length(camera.target - camera.position);
    if (args.Has("frame"))
      error = InvalidArgument("frame", "camera ja diz de onde olhar");
    else if (!(distance > 0) || !std::isfinite(distance))
      error = InvalidArgument("camera.target", "deveria ficar longe de position");
    else
      return true;
    return false;
  }
  const Json& frame = args.At("frame");
  std::pair<Vec3, Vec3> box;
  if (!FramedBox(objects, frame, box, error)) return false;
  const std::string view = frame.At("view").TextOr("iso");
  double elevation = view == "iso" ? 35 : view == "top" ? 89 : 25;
  if (frame.Has("elevation")) elevation = frame.At("elevation").number;
  camera.fov = frame.Has("fov") ? frame.At("fov").number : kDefaultFov;
  camera.target = (box.first + box.second) * 0.5;
  camera.position = camera.target + ViewDirection(view, elevation);
  FillPicture(box, aspect, camera);
  if (std::isfinite(Length(camera.position))) return true;
  error = InvalidArgument("frame", "grande demais para enquadrar");
  return false;
}

Json Statistics(const Picture& picture) {
  std::array<double, 3> mean{};
  for (std::size_t at = 0; at < picture.pixels.size(); ++at)
    mean[at % 3] += picture.pixels[at] * 3 / 255.0 / static_cast<double>(picture.pixels.size());
  const double luminance = 0.2126 * mean[0] + 0.7152 * mean[1] + 0.0722 * mean[2];
  return Json::Object({{"luminance", luminance},
                       {"cb", (mean[2] - luminance) / 1.8556},
                       {"cr", (mean[0] - luminance) / 1.5748},
                       {"gpu_ms", Json::Object()}});  // Drawn without a graphics card.
}

bool SaveCapture(const std::string& png, std::string& path, Json& error) {
  static int number = 0;
  const std::filesystem::path file = core::McpHome() / "captures" /
                                     ("captura-" + std::to_string(core::CurrentProcessId()) + "-" +
                                      std::to_string(++number) + ".png");
  const core::WriteResult written = core::WriteFileDurably(file, png, core::FileEncoding::Binary);
  const std::u8string utf8 = file.u8string();
  path.assign(utf8.begin(), utf8.end());
  if (written.status == core::WriteStatus::Ok) return true;
  error = authoring::ErrorBody("io_error", written.message, "", Json());
  return false;
}

}  // namespace

bool InspectCapture(World& world, const Call& call, Json& result, Json& error) {
  const std::string shading = call.args.At("shading").TextOr("lit");
  if (shading != "lit" && shading != "unlit") {
    error = authoring::ErrorBody("unsupported", "Este editor nao tem a vista " + shading + ".",
                                 "Use shading lit ou unlit.", Json());
    return false;
  }
  const auto width = static_cast<std::uint32_t>(call.args.At("width").IntOr(960));
  const auto height = static_cast<std::uint32_t>(call.args.At("height").IntOr(540));
  Camera camera;
  if (!ReadCamera(world.objects, call.args, static_cast<double>(width) / height, camera, error))
    return false;
  const Picture picture = DrawWorld(world.objects, camera, width, height, shading == "lit");
  const std::string png = WritePng(picture);
  std::string file;
  if (!SaveCapture(png, file, error)) return false;

  result = Json::Object({{"file", file},
                         {"width", width},
                         {"height", height},
                         {"rendered_revision", world.revision},
                         // Drawn from the world itself, at once, so that nothing can be pending.
                         {"complete", true},
                         {"pending", Json::Array()},
                         {"camera", Json::Object({{"position", VectorJson(camera.position)},
                                                  {"target", VectorJson(camera.target)},
                                                  {"fov", camera.fov}})},
                         {"profile", "exemplo"},
                         {"shading", shading},
                         {"stats", Statistics(picture)}});
  if (call.args.At("include_image").BoolOr(true)) {
    result.Set("images", Json::Array({Json::Object({{"mime", "image/png"},
                                                    {"data_base64", Base64(png)},
                                                    {"width", width},
                                                    {"height", height}})}));
  }
  return true;
}

}  // namespace zorvik::sample_editor
