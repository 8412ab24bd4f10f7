#include <gtest/gtest.h>

#include <string>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;

class SampleEditorTest : public testing::Test {
 protected:
  TemporaryHome home;
  EditorProcess editor{"vale"};
  McpClient client;

  Json Document(const std::string& tool, const std::string& arguments) {
    const Json result = client.Call(tool, arguments);
    EXPECT_EQ(Outcome(result), "ok") << core::WriteJson(result);
    return result.At("structuredContent");
  }
};

TEST_F(SampleEditorTest, ShowsNoDigitsBelowTheMillimetreButWhatSomebodySetAsItIs) {
  const Json ground = Document("terrain_sample",
                               R"({"bounds":{"min_x":-256,"min_z":-256,"max_x":256,"max_z":256}})");
  EXPECT_LT(core::WriteJson(ground).size(), 32'000U);
  EXPECT_NEAR(ground.At("height")[1].number, 4.340323, 0.0006);
  EXPECT_EQ(ground.At("step").number, 512.0 / 63);

  const std::string values = R"("x":60.2,"y":0.123,"friction":0.00012,"tint":[0.0003,0.5,1])";
  Document("objects_create", R"({"objects":[{"asset":"zorvik_rocha","z":0,)" + values + "}]}");
  const Json read = Document("objects_get", R"({"ids":[13]})").At("objects");
  for (const auto& [key, value] : Parse("{" + values + "}").fields)
    EXPECT_EQ(core::WriteJson(read[0].At(key)), core::WriteJson(value)) << key;
}

TEST_F(SampleEditorTest, WarnsOfWhatIsPutIntoSomethingElse) {
  const struct {
    const char* objects;
    const char* warning;
  } kCases[] = {
      {R"({"asset":"zorvik_pinheiro","x":23,"z":-31})",
       "O objeto 13 (zorvik_pinheiro) entra no objeto 1 (zorvik_casa)."},
      {R"({"asset":"zorvik_rocha","x":-38.5,"z":10})", ""},  // Below the oak's crown.
      {R"({"asset":"zorvik_poco","parent":1,"x":0,"z":0})", ""},
      {R"({"asset":"zorvik_rocha","x":35,"z":-42})", ""},  // The well there is hidden.
      {R"({"asset":"zorvik_casa","x":100,"z":0},{"asset":"zorvik_casa","x":103,"z":3,"yaw":30})",
       "O objeto 18 (zorvik_casa) entra no objeto 17 (zorvik_casa)."},
  };
  const auto warnings = [&](const std::string& tool, const std::string& arguments) {
    return core::WriteJson(Document(tool, arguments).At("warnings"));
  };
  const auto list = [](const std::string& text) {
    return text.empty() ? "null" : "[\"" + text + "\"]";
  };
  for (const auto& [objects, warning] : kCases) {
    const std::string arguments = std::string(R"({"objects":[)") + objects + "]}";
    EXPECT_EQ(warnings("objects_create", arguments), list(warning)) << objects;
  }
  // Whatever the way in; but nothing is said of what stays where it is.
  const std::string update = R"({"base_revision":6,"updates":[{"id":14,)";
  EXPECT_EQ(warnings("objects_update", update + R"("x":100,"z":0}]})"),
            list("O objeto 14 (zorvik_rocha) entra no objeto 17 (zorvik_casa)."));
  EXPECT_EQ(warnings("objects_update", update + R"("name":"Rocha"}]})"), "null");
  EXPECT_EQ(warnings("batch_apply", R"({"ops":[{"tool":"objects_create","args":{"objects":[)"
                                    R"({"asset":"zorvik_cerca","x":100,"z":-1}]}}]})"),
            list("O objeto 19 (zorvik_cerca) entra no objeto 17 (zorvik_casa)."));
}

TEST_F(SampleEditorTest, DrawsWhatIsFramedAlikeEachTimeUntilItChanges) {
  const auto image = [&](const std::string& frame) {
    const std::string arguments = R"({"width":160,"height":90,"frame":{)" + frame + "}}";
    return client.Call("inspect_capture", arguments).At("content")[1].At("data").text;
  };
  const std::string tree = image(R"("ids":[4])");
  EXPECT_EQ(image(R"("ids":[4])"), tree);
  EXPECT_NE(image(R"("ids":[4],"view":"north")"), tree);
  EXPECT_NE(image(""), tree);
  editor.Person("criar zorvik_rocha 62 42");
  EXPECT_NE(image(R"("ids":[4])"), tree);

  // The world fills its picture, though it is flat.
  const Json world = Document("inspect_capture", R"({"width":160,"height":90})");
  EXPECT_LT(world.At("camera").At("position").At("y").number, 200);
}

}  // namespace
}  // namespace zorvik::tests
