#include "authoring/validate.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/wire.h"

namespace zorvik::authoring {
namespace {

using core::Json;

using tests::Parse;

const struct {
  const char* schema;
  const char* value;
  const char* field;
  const char* reason;  // Empty: the value fits.
} kCases[] = {
    {R"({"type":"object"})", "1", "", "deveria ser um objeto"},
    {R"({"type":"array"})", "{}", "", "deveria ser uma lista"},
    {R"({"type":"array"})", "[]", "", ""},
    {R"({"type":"object"})", "{}", "", ""},
    {R"({"type":"boolean"})", "true", "", ""},
    {R"({"type":"string"})", "null", "", "deveria ser um texto"},
    {R"({"type":"number"})", R"("1")", "", "deveria ser um numero"},
    {R"({"type":"integer"})", "0.5", "", "deveria ser um inteiro"},
    {R"({"type":"integer"})", "9007199254740992", "", ""},
    {R"({"type":"integer"})", "1e300", "", "deveria ser um inteiro"},
    {R"({"type":"boolean"})", "0", "", "deveria ser verdadeiro ou falso"},
    {R"({"type":"null"})", "false", "", "deveria ser nulo"},
    {R"({"type":"null"})", "null", "", ""},
    {R"({"type":"float"})", "1.5", "", "deveria ser nulo"},
    {R"({"type":"float"})", "null", "", "deveria ser nulo"},
    {R"({})", R"([{"a":null}])", "", ""},
    {R"({"enum":["smooth","linear"]})", R"("firm")", "", "deveria ser um de: smooth linear"},
    {R"({"enum":["smooth","linear"]})", R"("linear")", "", ""},
    {R"({"enum":["a",1,2.5,null]})", "null", "", "deveria ser um de: a 1 2.500000 0"},
    {R"({"enum":["1",1]})", "1.0", "", ""},
    {R"({"enum":[1,3]})", "2", "", "deveria ser um de: 1 3"},
    {R"({"enum":[]})", "1", "", "deveria ser um de:"},
    {R"({"type":"string","enum":["a"]})", "1", "", "deveria ser um texto"},
    {R"({"minimum":0.25,"maximum":20000})", "0.25", "", ""},
    {R"({"minimum":0.25,"maximum":20000})", "20000", "", ""},
    {R"({"minimum":0.25})", "0", "", "deveria ser no minimo 0.250000"},
    {R"({"maximum":-1.5})", "0", "", "deveria ser no maximo -1.500000"},
    {R"({"maximum":999999999999999})", "1e16", "", "deveria ser no maximo 999999999999999"},
    {R"({"maximum":1e15})", "1e16", "", "deveria ser no maximo 1000000000000000.000000"},
    {R"({"minLength":1})", R"("")", "", "deveria ter pelo menos 1 caracteres"},
    {R"({"minLength":2,"maxLength":2})", R"("çã")", "", ""},
    {R"({"maxLength":2})", R"("çãé")", "", "deveria ter no maximo 2 caracteres"},
    {R"({"minLength":-3,"maxLength":1e300})", R"("")", "", ""},
    {R"({"maxLength":-1})", R"("a")", "", "deveria ter no maximo -1 caracteres"},
    {R"({"minLength":1e20})", R"("a")", "",
     "deveria ter pelo menos 100000000000000000000.000000 caracteres"},
    {R"({"minimum":"2","maxLength":[1]})", "1", "", ""},
    {R"({"minItems":1})", "[]", "", "deveria ter pelo menos 1 itens"},
    {R"({"maxItems":1,"items":{"type":"string"}})", "[1,2]", "", "deveria ter no maximo 1 itens"},
    {R"({"items":{"items":{"type":"string"}}})", R"([[],["a",1]])", "[1][1]",
     "deveria ser um texto"},
    {R"({"items":1})", R"(["a",1])", "", ""},
    {R"({"required":["a","b"]})", R"({"a":1})", "b", "e obrigatorio"},
    {R"({"required":["a"],"additionalProperties":false})", R"({"b":1})", "a", "e obrigatorio"},
    {R"({"required":[1,"a"]})", R"({"a":null})", "", ""},
    {R"({"properties":{"a":{"type":"string"}},"additionalProperties":false})", R"({"z":1,"a":1})",
     "z", "nao e um campo desta ferramenta"},
    {R"({"properties":{"a":{"type":"string"}},"additionalProperties":false})", R"({"a":1,"z":1})",
     "a", "deveria ser um texto"},
    {R"({"properties":{"a":1},"additionalProperties":false})", R"({"a":1})", "a",
     "nao e um campo desta ferramenta"},
    {R"({"additionalProperties":true})", R"({"z":1})", "", ""},
    {R"({"additionalProperties":0})", R"({"z":1})", "", ""},
    {R"({"properties":{"":{"required":[""]}}})", R"({"":{}})", "", "e obrigatorio"},
    {R"({"properties":{"a":{"items":{"properties":{"b":{"items":{"maximum":2}}}}}}})",
     R"({"a":[{"b":[1]},{"c":9,"b":[0,1,3]}]})", "a[1].b[2]", "deveria ser no maximo 2"},
};

TEST(ValidateTest, TellsTheFirstFault) {
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.schema) + " against " + c.value);
    std::string field = "left over";
    std::string reason = "left over";
    EXPECT_EQ(Validate(Parse(c.schema), Parse(c.value), field, reason), *c.reason == '\0');
    EXPECT_EQ(field, c.field);
    EXPECT_EQ(reason, c.reason);
  }
}

// Numbers that no JSON text yields.
TEST(ValidateTest, OnlyFiniteNumbersAreNumbers) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  std::string field;
  std::string reason;
  for (const char* type : {R"({"type":"number"})", R"({"type":"integer"})"})
    EXPECT_FALSE(Validate(Parse(type), Json::Number(kNaN), field, reason)) << type;
  Json schema;
  schema.Set("minItems", Json::Number(kNaN));
  EXPECT_TRUE(Validate(schema, Json::Array(), field, reason)) << reason;
}

}  // namespace
}  // namespace zorvik::authoring
