#include "authoring/schema.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace zorvik::authoring {
namespace {

struct Case {
  const char* name;
  Schema schema;
  const char* text;
};

// For the name that a failure is reported under.
void PrintTo(const Case& test, std::ostream* out) {
  *out << test.name;
}

class SchemaTest : public testing::TestWithParam<Case> {};

TEST_P(SchemaTest, WritesItsKeysInTheOrderOfTheCalls) {
  EXPECT_EQ(core::WriteJson(GetParam().schema.Document()), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, SchemaTest,
    testing::Values(
        Case{"EmptyObject", Schema::Object(""), R"({"type":"object","properties":{}})"},
        Case{"NoDescription", Schema::Number(""), R"({"type":"number"})"},
        Case{"Array", Schema::Array(Schema::String(""), "").MinItems(1).MaxItems(2),
             R"({"type":"array","items":{"type":"string"},"minItems":1,"maxItems":2})"},
        Case{"EnumKeepsItsOrder", Schema::String("d").Enum({"b", "a"}),
             R"({"type":"string","description":"d","enum":["b","a"]})"},
        Case{"Lengths", Schema::String("").MinLength(0).MaxLength(9),
             R"({"type":"string","minLength":0,"maxLength":9})"},
        Case{"Limits", Schema::Number("").Min(0.1).Max(4294967295.0),
             R"({"type":"number","minimum":0.10000000000000001,"maximum":4294967295})"},
        Case{"ReplacedLimitKeepsItsPlace", Schema::Integer("").Min(5).Max(9).Min(-1),
             R"({"type":"integer","minimum":-1,"maximum":9})"},
        Case{"ClosedThenOpen",
             Schema::Object("").Closed().Field("a", Schema::Boolean(""), false).Open(),
             R"({"type":"object","properties":{"a":{"type":"boolean"}},)"
             R"("additionalProperties":true})"},
        Case{"WholeObject",
             Schema::Object("d").Field("a", Schema::Number("x").Min(0).Max(1), true).Closed(),
             R"({"type":"object","description":"d","properties":{"a":{"type":"number",)"
             R"("description":"x","minimum":0,"maximum":1}},"required":["a"],)"
             R"("additionalProperties":false})"},
        Case{"RequiredAfterClosed",
             Schema::Object("").Closed().Field("a", Schema::Boolean(""), true),
             R"({"type":"object","properties":{"a":{"type":"boolean"}},)"
             R"("additionalProperties":false,"required":["a"]})"},
        Case{"ReplacedFieldKeepsItsPlace",
             Schema::Object("")
                 .Field("a", Schema::Number(""), true)
                 .Field("b", Schema::Number(""), false)
                 .Field("a", Schema::String(""), true)
                 .Field("a", Schema::Boolean(""), false),
             R"({"type":"object","properties":{"a":{"type":"boolean"},"b":{"type":"number"}},)"
             R"("required":["a","a"]})"},
        Case{"FieldWithoutProperties",
             Schema::Typed("array", "").Field("a", Schema::Boolean(""), false),
             R"({"type":"array","properties":{"a":{"type":"boolean"}}})"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(SchemaFieldTest, CopiesWhatItIsGiven) {
  Schema inner = Schema::Number("");
  Schema outer = Schema::Object("").Field("a", inner, false);
  inner.Min(3);
  outer.Field("self", outer, false);
  EXPECT_EQ(core::WriteJson(outer.Document()),
            R"({"type":"object","properties":{"a":{"type":"number"},)"
            R"("self":{"type":"object","properties":{"a":{"type":"number"}}}}})");
}

}  // namespace
}  // namespace zorvik::authoring
