#include "authoring/schema.h"

#include <gtest/gtest.h>

#include <string>

namespace zorvik::authoring {
namespace {

// What the rows do themselves stands in the manual, byte for byte.
TEST(SchemaTest, KeysKeepTheirPlacesWhereNoRowHasYetPutThem) {
  Schema self = Schema::Object("");
  const struct {
    Schema schema;
    const char* text;
  } cases[] = {
      {Schema::Integer("").Min(5).Max(9).Min(-1), R"({"type":"integer","minimum":-1,"maximum":9})"},
      {Schema::Object("").Closed().Field("a", Schema::Boolean(""), true).Open(),
       R"({"type":"object","properties":{"a":{"type":"boolean"}},"additionalProperties":true,)"
       R"("required":["a"]})"},
      {Schema::Object("")
           .Field("a", Schema::Number(""), true)
           .Field("b", Schema::Number(""), false)
           .Field("a", Schema::String("").MinLength(0), true),
       R"({"type":"object","properties":{"a":{"type":"string","minLength":0},)"
       R"("b":{"type":"number"}},"required":["a","a"]})"},
      {Schema::Typed("array", "").Field("a", Schema::Boolean(""), false),
       R"({"type":"array","properties":{"a":{"type":"boolean"}}})"},
      {self.Field("self", self, false),
       R"({"type":"object","properties":{"self":{"type":"object","properties":{}}}})"},
  };
  for (const auto& c : cases) EXPECT_EQ(core::WriteJson(c.schema.Document()), c.text);
}

}  // namespace
}  // namespace zorvik::authoring
