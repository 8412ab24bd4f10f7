#include "examples/sample_editor/person.h"

#include <sstream>
#include <utility>

#include "core/json.h"
#include "examples/sample_editor/operations.h"

namespace zorvik::sample_editor {

using core::Json;

std::string DoAsPerson(World& world, const std::string& line) {
  std::istringstream words(line);
  std::string verb;
  std::string what;
  double x = 0;
  double z = 0;
  words >> verb >> what >> x >> z;
  std::string rest;
  const bool moves = verb == "mover";
  if (words.fail() || words >> rest || (!moves && verb != "criar"))
    return "erro use: mover ID X Z | criar ASSET X Z | sair";
  Json item = Json::Object({{"x", x}, {"z", z}});
  if (moves) {
    std::int64_t id = 0;
    std::istringstream(what) >> id;
    item.Set("id", Json::Int(id));
  } else {
    item.Set("asset", Json::Text(what));
  }

  // The person sees the world as it is, and so has always read the newest revision.
  const Call call{moves ? "objects.update" : "objects.create",
                  Json::Object({{moves ? "updates" : "objects", Json::Array({std::move(item)})},
                                {"base_revision", world.revision}}),
                  {"user", ""}};
  Json result = Json::Object();
  Json error;
  if (!RunOperation(world, call, result, error)) return "erro " + error.At("message").text;
  return "feito " + std::to_string(world.revision);
}

}  // namespace zorvik::sample_editor
