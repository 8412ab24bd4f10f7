#include "authoring/catalog.h"

#include <gtest/gtest.h>

#include <string>

namespace zorvik::authoring {
namespace {

using core::Json;

TEST(CatalogTest, FindsRowsByTheirExactNames) {
  for (const ToolSpec& tool : Tools()) {
    EXPECT_EQ(FindTool(tool.name), &tool);
    EXPECT_EQ(FindOperation(tool.operation), &tool);
  }
  for (const char* name : {"", "Objects_Create", "objects.create", "objects_creat"})
    EXPECT_EQ(FindTool(name), nullptr) << name;
  EXPECT_EQ(FindOperation("objects_create"), nullptr);
}

// The rest of a row stands in the manual, byte for byte.
TEST(CatalogTest, OutputsShareOneEnvelopeAndOneToolIsLocal) {
  for (const ToolSpec& tool : Tools()) {
    const Json& description = tool.output.At("description");
    EXPECT_FALSE(description.text.empty()) << tool.name;
    EXPECT_EQ(WriteJson(tool.output),
              R"({"type":"object","description":)" + WriteJson(description) +
                  R"(,"properties":{"ok":{"type":"boolean","description":"Verdadeiro no sucesso."})"
                  R"(,"revision":{"type":"integer","description":"Revisao do mundo em que a )"
                  R"(resposta foi calculada."},"warnings":{"type":"array","items":{"type":)"
                  R"("string"}},"error":{"type":"object","description":"Com ok falso: code )"
                  R"((estavel), message, hint e details.","properties":{},)"
                  R"("additionalProperties":true}},"required":["ok"],)"
                  R"("additionalProperties":true})");
    EXPECT_EQ(tool.local, tool.name == "editor_list") << tool.name;
  }
}

TEST(ErrorBodyTest, LeavesOutWhatIsEmpty) {
  EXPECT_EQ(WriteJson(ErrorBody("c", "m", "h", Json::Bool(false))),
            R"({"code":"c","message":"m","hint":"h","details":false})");
  EXPECT_EQ(WriteJson(ErrorBody("", "", "", Json())), R"({"code":"","message":""})");
}

}  // namespace
}  // namespace zorvik::authoring
