#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "authoring/catalog.h"
#include "authoring/validate.h"

namespace zorvik::authoring {
namespace {

// What each tool refuses, and what it lets through to the editor at the edge of a rule.
struct Case {
  const char* tool;
  std::string arguments;
  const char* field = "";
  const char* reason = "";  // Empty: the arguments fit.
};

// For the name that a failure is reported under.
void PrintTo(const Case& test, std::ostream* out) {
  *out << test.tool << " " << test.arguments.substr(0, 60);
}

// A JSON list of `count` times the same element.
std::string List(int count, const std::string& element) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += (i == 0 ? "" : ",") + element;
  }
  return "[" + text + "]";
}

// A JSON text of that many characters.
std::string Text(std::size_t length) {
  return '"' + std::string(length, 'x') + '"';
}

// Arguments with one member.
std::string One(const std::string& key, const std::string& value) {
  return "{\"" + key + "\":" + value + "}";
}

std::string InObject(const std::string& field) {
  return R"({"objects":[{"asset":"a","x":0,"z":0,)" + field + "}]}";
}

std::string InStroke(const std::string& fields) {
  return R"({"strokes":[{"x":0,"z":0,)" + fields + "}]}";
}

std::string InHouse(const std::string& field) {
  return R"({"x":0,"z":0,)" + field + "}";
}

constexpr const char* kRequired = "e obrigatorio";
constexpr const char* kUnknown = "nao e um campo desta ferramenta";

class RefusalsTest : public testing::TestWithParam<Case> {};

TEST_P(RefusalsTest, TellTheFieldAndTheReason) {
  const Case& test = GetParam();
  const ToolSpec* tool = FindTool(test.tool);
  ASSERT_NE(tool, nullptr) << test.tool;
  core::Json arguments;
  std::string error;
  ASSERT_TRUE(core::ParseJson(test.arguments, arguments, error)) << error;
  std::string field;
  std::string reason;
  Validate(tool->input, arguments, field, reason);
  EXPECT_EQ(field, test.field);
  EXPECT_EQ(reason, test.reason) << test.tool << ' ' << test.arguments.substr(0, 200);
}

std::string Name(const testing::TestParamInfo<Case>& test) {
  return std::string(test.param.tool) + "_" + std::to_string(test.index);
}

INSTANTIATE_TEST_SUITE_P(
    Reading, RefusalsTest,
    testing::Values(
        Case{"editor_list", R"({"editor_id":"e"})", "editor_id", kUnknown},
        Case{"objects_get", R"({"ids":[]})", "ids", "deveria ter pelo menos 1 itens"},
        Case{"objects_get", One("ids", List(201, "1")), "ids", "deveria ter no maximo 200 itens"},
        Case{"objects_get", R"({"ids":[0]})", "ids[0]", "deveria ser no minimo 1"},
        Case{"objects_query", R"({"limit":201})", "limit", "deveria ser no maximo 200"},
        Case{"objects_query", One("cursor", Text(65)), "cursor",
             "deveria ter no maximo 64 caracteres"},
        Case{"objects_query", R"({"near":{"x":0,"z":0,"radius":20000}})"},
        Case{"objects_query", R"({"near":{"x":0,"z":0}})", "near.radius", kRequired},
        Case{"terrain_sample", "{}", "bounds", kRequired},
        Case{"terrain_sample",
             R"({"bounds":{"min_x":9,"min_z":0,"max_x":1,"max_z":1},"step":0.25,"fields":[]})"},
        Case{"terrain_sample",
             R"({"bounds":{"min_x":0,"min_z":0,"max_x":1,"max_z":1},"fields":["heat"]})",
             "fields[0]", "deveria ser um de: height slope normal material water"}),
    Name);

INSTANTIATE_TEST_SUITE_P(
    Assets, RefusalsTest,
    testing::Values(
        Case{"assets_inspect", One("files", List(33, R"("a")")), "files",
             "deveria ter no maximo 32 itens"},
        Case{"assets_import", One("files", List(1, Text(1025))), "files[0]",
             "deveria ter no maximo 1024 caracteres"},
        Case{"assets_import", R"({"files":["a"],"select":[{"id":""}]})", "select[0].source",
             kRequired},
        Case{"assets_import",
             R"({"files":["a"],"select":[{"source":"s","id":""}],"folder":"A b","metres":0})"},
        Case{"assets_import", R"({"files":["a"],"collision":"composta"})", "collision",
             "deveria ser um de: caixa circulo tronco malha convexo passagem"},
        Case{"assets_compose", R"({"root":1,"collision":"circulo"})", "collision",
             "deveria ser um de: composta malha convexo caixa passagem"},
        Case{"assets_compose", R"({"root":1,"id":)" + Text(49) + "}", "id",
             "deveria ter no maximo 48 caracteres"},
        Case{"assets_reprocess", One("id", Text(49))},
        Case{"assets_reprocess", R"({"id":"a","metres":501})", "metres",
             "deveria ser no maximo 500"},
        Case{"assets_restore_version", R"({"id":"a","version":0})", "version",
             "deveria ser no minimo 1"}),
    Name);

INSTANTIATE_TEST_SUITE_P(
    Objects, RefusalsTest,
    testing::Values(
        Case{"objects_create", One("objects", List(256, R"({"asset":"a","x":0,"z":0})"))},
        Case{"objects_create", One("objects", List(257, "{}")), "objects",
             "deveria ter no maximo 256 itens"},
        Case{"objects_create", R"({"objects":[{}]})", "objects[0].asset", kRequired},
        Case{"objects_update", R"({"updates":[{"id":1,"move_by":{}}]})"},
        Case{"objects_create", InObject(R"("scale":0.05)"), "objects[0].scale",
             "deveria ser no minimo 0.100000"},
        Case{"objects_create", InObject(R"("scale_xyz":{"x":9},"parent":0,"tint_hex":"zzzzzzz")")},
        Case{"objects_create", InObject(R"("tint":[1,1])"), "objects[0].tint",
             "deveria ter pelo menos 3 itens"},
        Case{"objects_create", InObject(R"("tint_hex":"#fffff")"), "objects[0].tint_hex",
             "deveria ter pelo menos 7 caracteres"},
        Case{"objects_create", InObject(R"("tint":[1,1,3])"), "objects[0].tint[2]",
             "deveria ser no maximo 2"},
        Case{"objects_delete", R"({"ids":[1],"request_id":""})", "request_id",
             "deveria ter pelo menos 1 caracteres"},
        Case{"objects_duplicate", R"({"ids":[1],"offset":{"w":1}})", "offset.w", kUnknown}),
    Name);

INSTANTIATE_TEST_SUITE_P(
    Ground, RefusalsTest,
    testing::Values(
        Case{"terrain_sculpt", InStroke(R"("radius":1)"), "strokes[0].mode", kRequired},
        Case{"terrain_sculpt", InStroke(R"("radius":0.2,"mode":"raise")"), "strokes[0].radius",
             "deveria ser no minimo 0.250000"},
        Case{"terrain_sculpt", InStroke(R"("radius":1,"mode":"flatten","strength":500)")},
        Case{"terrain_sculpt", InStroke(R"("radius":1,"mode":"set","erase":true)"),
             "strokes[0].erase", kUnknown},
        Case{"terrain_sculpt",
             InStroke(R"("radius":1,"mode":"set","path":)" + List(257, R"({"x":0,"z":0})")),
             "strokes[0].path", "deveria ter no maximo 256 itens"},
        Case{"terrain_generate", R"({"seed":4294967295})"},
        Case{"terrain_generate", R"({"seed":4294967296})", "seed",
             "deveria ser no maximo 4294967295"},
        Case{"terrain_heightmap_export", R"({"request_id":"","label":"a"})", "label", kUnknown},
        Case{"surface_paint", R"({"layer":2})", "layer", "deveria ser um texto"},
        Case{"surface_layers", R"({"update":[{"index":4}]})", "update[0].index",
             "deveria ser no maximo 3"},
        Case{"vegetation_species", R"({"update":[{"index":31},{}]})", "update[1].index", kRequired},
        Case{"vegetation_paint", R"({"species":"a"})"}),
    Name);

INSTANTIATE_TEST_SUITE_P(
    Features, RefusalsTest,
    testing::Values(
        Case{"water_upsert", R"({"body":{"outline":[{"x":0,"z":0},{"x":1,"z":0}]}})",
             "body.outline", "deveria ter pelo menos 3 itens"},
        Case{"water_upsert", R"({"body":{"nodes":[{"x":0,"z":0,"width":1},{}]}})",
             "body.nodes[0].level", kRequired},
        Case{"world_configure", R"({"height_range":{"min":0}})", "height_range.max", kRequired},
        Case{"world_configure", R"({"environment":{"hour":24,"ground_bounce":[-1,-1,-1]}})"},
        Case{"world_configure", R"({"environment":{"haze":{"density":3.5}}})",
             "environment.haze.density", "deveria ser no maximo 3"},
        Case{"world_save", R"({"base_revision":1})", "base_revision", kUnknown},
        Case{"roads_upsert", "{}", "road", kRequired},
        Case{"roads_upsert", R"({"road":{"nodes":[{"x":0,"z":0,"width":0.5},{}]}})",
             "road.nodes[0].width", "deveria ser no minimo 1"},
        Case{"roads_upsert", R"({"road":{"layer":"","bridges":[{"from":5,"to":1,"asset":""}]}})"},
        Case{"regions_upsert", R"({"region":{"polygon":)" + List(65, R"({"x":0,"z":0})") + "}}",
             "region.polygon", "deveria ter no maximo 64 itens"},
        Case{"regions_apply", R"({"ids":[],"relief":false})"},
        Case{"scatter_upsert", R"({"rule":{"density":0}})", "rule.density",
             "deveria ser no minimo 0.001000"},
        Case{"scatter_upsert", R"({"rule":{"exclusions":[[]]}})", "rule.exclusions[0]",
             "deveria ter pelo menos 3 itens"}),
    Name);

INSTANTIATE_TEST_SUITE_P(
    Buildings, RefusalsTest,
    testing::Values(Case{"buildings_create", InHouse(R"("floor_height":2.3)"), "floor_height",
                         "deveria ser no minimo 2.400000"},
                    Case{"buildings_create", InHouse(R"("openings":[{"floor":3,"wall":"north"}])"),
                         "openings[0].floor", "deveria ser no maximo 2"},
                    Case{"buildings_create", InHouse(R"("openings":[{"floor":2,"wall":"up"}])"),
                         "openings[0].wall", "deveria ser um de: north east south west"},
                    Case{"buildings_create",
                         InHouse(R"("openings":[{"floor":0,"wall":"east","width":0.5}])")},
                    Case{"buildings_update", R"({"id":1,"yaw":0})", "yaw", kUnknown},
                    Case{"buildings_delete", One("ids", List(33, "1")), "ids",
                         "deveria ter no maximo 32 itens"},
                    Case{"doors_configure", R"({"object_id":1})", "door", kRequired},
                    Case{"doors_configure", R"({"object_id":1,"door":{"open_angle":171}})",
                         "door.open_angle", "deveria ser no maximo 170"}),
    Name);

INSTANTIATE_TEST_SUITE_P(
    Inspection, RefusalsTest,
    testing::Values(
        Case{"inspect_walk", R"({"from":{"x":0},"waypoints":[]})", "from.z", kRequired},
        Case{"inspect_walk", R"({"from":{"x":0,"z":0},"waypoints":[{"x":0,"z":0}],"speed":0.4})",
             "speed", "deveria ser no minimo 0.500000"},
        Case{"inspect_capture", R"({"camera":{"position":{}}})", "camera.target", kRequired},
        Case{"inspect_capture", R"({"wait_ms":20000})", "wait_ms", "deveria ser no maximo 10000"},
        Case{"inspect_capture", R"({"width":1920,"height":1081})", "height",
             "deveria ser no maximo 1080"},
        Case{"inspect_probe", One("points", List(256, R"({"x":0,"z":0})"))},
        Case{"inspect_probe", One("rays", List(257, "{}")), "rays",
             "deveria ter no maximo 256 itens"},
        Case{"inspect_validate", R"({"max_issues":501})", "max_issues",
             "deveria ser no maximo 500"}),
    Name);

INSTANTIATE_TEST_SUITE_P(
    WorldsAndHistory, RefusalsTest,
    testing::Values(
        Case{"world_open", One("path", Text(260))},
        Case{"world_open", One("path", Text(261)), "path", "deveria ter no maximo 260 caracteres"},
        Case{"world_create", R"({"extent":{"min_x":0,"min_z":0,"max_x":0}})", "extent.max_z",
             kRequired},
        Case{"world_create", R"({"min_height":7997})", "min_height", "deveria ser no maximo 7996"},
        Case{"world_create", R"({"max_height":-3997})", "max_height",
             "deveria ser no minimo -3996"},
        Case{"cells_list", R"({"cursor":"a"})", "cursor", "deveria ser um inteiro"},
        Case{"quality_set", R"({"profile":"personalizado"})", "profile",
             "deveria ser um de: desempenho equilibrado qualidade"},
        Case{"history_list", R"({"author":"bot"})", "author", "deveria ser um de: user agent"},
        Case{"history_checkpoint", R"({"name":"a","request_id":"b"})", "request_id", kUnknown},
        Case{"jobs_cancel", R"({"job_id":0})", "job_id", "deveria ser no minimo 1"},
        Case{"batch_apply", R"({"ops":[{"tool":"jobs_get","args":{"any":[{}]}}]})"},
        Case{"batch_apply", R"({"ops":[{"tool":"a","args":1}]})", "ops[0].args",
             "deveria ser um objeto"},
        Case{"batch_apply", R"({"ops":[{"tool":"a","args":{},"ref":"b"}]})", "ops[0].ref",
             kUnknown}),
    Name);

}  // namespace
}  // namespace zorvik::authoring
