#include "authoring/catalog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace zorvik::authoring {
namespace {

using core::Json;

std::vector<std::string> Keys(const Json& object) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : object.fields) keys.push_back(key);
  return keys;
}

// Calls `visit` with every node of a schema and its place in it.
void Walk(const Json& node, const std::string& place,
          const std::function<void(const Json&, const std::string&)>& visit) {
  visit(node, place);
  for (const auto& [key, field] : node.At("properties").fields)
    Walk(field, std::string(place).append(".").append(key), visit);
  if (node.Has("items")) Walk(node.At("items"), place + "[]", visit);
}

void WalkInputs(const std::function<void(const Json&, const std::string&)>& visit) {
  for (const ToolSpec& tool : Tools()) Walk(tool.input, tool.name, visit);
}

TEST(CatalogTest, RowsAreWhole) {
  std::map<ToolKind, int> kinds;
  std::set<std::string> names;
  for (const ToolSpec& tool : Tools()) {
    EXPECT_TRUE(names.insert(tool.name).second) << tool.name;
    std::string operation = tool.name;
    operation.replace(operation.find('_'), 1, ".");
    EXPECT_EQ(tool.operation, operation);
    EXPECT_FALSE(tool.title.empty()) << tool.name;
    EXPECT_FALSE(tool.description.empty()) << tool.name;
    EXPECT_EQ(tool.local, tool.name == "editor_list") << tool.name;
    ++kinds[tool.kind];
  }
  EXPECT_EQ(kinds[ToolKind::Read], 25);
  EXPECT_EQ(kinds[ToolKind::Transaction], 38);
  EXPECT_EQ(kinds[ToolKind::Job], 8);
}

TEST(CatalogTest, FindsRowsByTheirExactNames) {
  const ToolSpec* row = FindTool("objects_create");
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->name, "objects_create");
  EXPECT_EQ(FindOperation("objects.create"), row);
  EXPECT_EQ(FindOperation("terrain.heightmap_import"), FindTool("terrain_heightmap_import"));
  for (const char* name : {"", "Objects_Create", "objects.create", "objects_creat"})
    EXPECT_EQ(FindTool(name), nullptr) << name;
  EXPECT_EQ(FindOperation("objects_create"), nullptr);
}

// The fields of a change follow the tool's own; a tool that only reads has none of them.
TEST(CatalogTest, CommonFieldsSuitTheKind) {
  const std::vector<std::string> mutation = {"editor_id", "base_revision", "request_id",
                                             "label",     "group",         "wait_ms"};
  for (const ToolSpec& tool : Tools()) {
    const std::vector<std::string> keys = Keys(tool.input.At("properties"));
    EXPECT_EQ(std::count(keys.begin(), keys.end(), "editor_id"), tool.local ? 0 : 1) << tool.name;
    const bool changes = tool.input.At("properties").Has("base_revision");
    if (changes) {
      ASSERT_GE(keys.size(), mutation.size()) << tool.name;
      EXPECT_TRUE(std::equal(mutation.rbegin(), mutation.rend(), keys.rbegin())) << tool.name;
    } else if (!tool.local) {
      EXPECT_EQ(keys.front(), "editor_id") << tool.name;
    }
    EXPECT_TRUE(changes || tool.kind != ToolKind::Job) << tool.name;
    const bool has_request_id = changes || tool.input.At("properties").Has("request_id");
    EXPECT_FALSE(tool.kind == ToolKind::Read && has_request_id) << tool.name;
  }
}

TEST(CatalogTest, OutputsShareOneEnvelope) {
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
  }
}

TEST(CatalogInputTest, ObjectsAreClosed) {
  int open = 0;
  WalkInputs([&](const Json& node, const std::string& place) {
    if (node.At("type").text == "object") {
      EXPECT_EQ(node.At("additionalProperties").kind, Json::Kind::Bool) << place;
      EXPECT_EQ(node.At("additionalProperties").boolean, place == "batch_apply.ops[].args")
          << place;
      open += node.At("additionalProperties").boolean ? 1 : 0;
    }
  });
  EXPECT_EQ(open, 1);
}

TEST(CatalogInputTest, LimitsLeaveRoom) {
  WalkInputs([](const Json& node, const std::string& place) {
    for (const auto& [lower, upper] :
         {std::pair("minimum", "maximum"), {"minItems", "maxItems"}, {"minLength", "maxLength"}})
      EXPECT_TRUE(!node.Has(lower) || !node.Has(upper) ||
                  node.At(lower).number <= node.At(upper).number)
          << place;
    for (const char* count : {"minItems", "maxItems", "minLength", "maxLength"})
      EXPECT_TRUE(!node.Has(count) || node.At(count).number >= 0) << place;
    if (node.At("type").text == "integer") {
      EXPECT_TRUE(!node.Has("minimum") || node.At("minimum").IsInteger()) << place;
      EXPECT_TRUE(!node.Has("maximum") || node.At("maximum").IsInteger()) << place;
    }
    std::set<std::string> words;
    for (const Json& word : node.At("enum").items)
      EXPECT_TRUE(words.insert(word.text).second) << place << ": " << word.text;
    EXPECT_EQ(node.Has("enum"), !words.empty()) << place;
  });
}

TEST(CatalogInputTest, RequiredNamesAreDeclaredOnce) {
  WalkInputs([](const Json& node, const std::string& place) {
    std::set<std::string> names;
    for (const Json& name : node.At("required").items) {
      EXPECT_TRUE(node.At("properties").Has(name.text)) << place << ": " << name.text;
      EXPECT_TRUE(names.insert(name.text).second) << place << ": " << name.text;
    }
    EXPECT_EQ(node.Has("required"), !names.empty()) << place;
  });
}

TEST(ErrorBodyTest, LeavesOutWhatIsEmpty) {
  EXPECT_EQ(WriteJson(ErrorBody("c", "m", "h", Json::Array())),
            R"({"code":"c","message":"m","hint":"h","details":[]})");
  EXPECT_EQ(WriteJson(ErrorBody("c", "m", "", Json::Bool(false))),
            R"({"code":"c","message":"m","details":false})");
  EXPECT_EQ(WriteJson(ErrorBody("", "", "", Json())), R"({"code":"","message":""})");
}

}  // namespace
}  // namespace zorvik::authoring
