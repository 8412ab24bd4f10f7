#include "authoring/validate.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>

namespace zorvik::authoring {
namespace {

struct Case {
  const char* schema;
  const char* value;
  const char* field;
  const char* reason;  // Empty: the value fits.
};

// For the name that a failure is reported under.
void PrintTo(const Case& test, std::ostream* out) {
  *out << test.schema << " " << test.value;
}

core::Json Parse(const std::string& text) {
  core::Json document;
  std::string error;
  EXPECT_TRUE(core::ParseJson(text, document, error)) << error << ": " << text;
  return document;
}

class ValidateTest : public testing::TestWithParam<Case> {};

TEST_P(ValidateTest, TellsTheFirstFault) {
  const Case& test = GetParam();
  std::string field = "left over";
  std::string reason = "left over";
  const bool fits = Validate(Parse(test.schema), Parse(test.value), field, reason);
  EXPECT_EQ(fits, reason.empty());
  EXPECT_EQ(field, test.field);
  EXPECT_EQ(reason, test.reason) << test.schema << " against " << test.value;
}

INSTANTIATE_TEST_SUITE_P(
    Types, ValidateTest,
    testing::Values(Case{R"({"type":"object"})", "1", "", "deveria ser um objeto"},
                    Case{R"({"type":"array"})", "{}", "", "deveria ser uma lista"},
                    Case{R"({"type":"string"})", "null", "", "deveria ser um texto"},
                    Case{R"({"type":"number"})", R"("1")", "", "deveria ser um numero"},
                    Case{R"({"type":"integer"})", "0.5", "", "deveria ser um inteiro"},
                    Case{R"({"type":"integer"})", "1.0", "", ""},
                    Case{R"({"type":"integer"})", "9007199254740992", "", ""},
                    Case{R"({"type":"integer"})", "1e300", "", "deveria ser um inteiro"},
                    Case{R"({"type":"boolean"})", "0", "", "deveria ser verdadeiro ou falso"},
                    Case{R"({"type":"null"})", "false", "", "deveria ser nulo"},
                    Case{R"({"type":"null"})", "null", "", ""},
                    Case{R"({"type":"float"})", "1.5", "", "deveria ser nulo"},
                    Case{R"({"type":"float"})", "null", "", "deveria ser nulo"},
                    Case{R"({})", R"([{"a":null}])", "", ""}));

INSTANTIATE_TEST_SUITE_P(
    Values, ValidateTest,
    testing::Values(
        Case{R"({"enum":["smooth","linear"]})", R"("firm")", "",
             "deveria ser um de: smooth linear"},
        Case{R"({"enum":["smooth","linear"]})", R"("linear")", "", ""},
        Case{R"({"enum":["a",1,2.5,null]})", "null", "", "deveria ser um de: a 1 2.500000 0"},
        Case{R"({"enum":["1",1]})", "1.0", "", ""},
        Case{R"({"enum":[1,3]})", "2", "", "deveria ser um de: 1 3"},
        Case{R"({"enum":[]})", "1", "", "deveria ser um de:"},
        Case{R"({"type":"string","enum":["a"]})", "1", "", "deveria ser um texto"},
        Case{R"({"minimum":1})", "0.99999", "", "deveria ser no minimo 1"},
        Case{R"({"minimum":0.25,"maximum":20000})", "0.25", "", ""},
        Case{R"({"minimum":0.25,"maximum":20000})", "20000", "", ""},
        Case{R"({"minimum":0.25})", "0", "", "deveria ser no minimo 0.250000"},
        Case{R"({"maximum":-1.5})", "0", "", "deveria ser no maximo -1.500000"},
        Case{R"({"maximum":-1})", "0", "", "deveria ser no maximo -1"},
        Case{R"({"maximum":999999999999999})", "1e16", "", "deveria ser no maximo 999999999999999"},
        Case{R"({"maximum":1e15})", "1e16", "", "deveria ser no maximo 1000000000000000.000000"},
        Case{R"({"minLength":1})", R"("")", "", "deveria ter pelo menos 1 caracteres"},
        Case{R"({"minLength":2,"maxLength":2})", R"("çã")", "", ""},
        Case{R"({"maxLength":2})", R"("çãé")", "", "deveria ter no maximo 2 caracteres"},
        Case{R"({"minLength":-3,"maxLength":1e300})", R"("")", "", ""},
        Case{R"({"maxLength":-1})", R"("a")", "", "deveria ter no maximo -1 caracteres"},
        Case{R"({"minLength":1e20})", R"("a")", "",
             "deveria ter pelo menos 100000000000000000000.000000 caracteres"},
        Case{R"({"minimum":"2","maxLength":[1]})", "1", "", ""}));

INSTANTIATE_TEST_SUITE_P(Lists, ValidateTest,
                         testing::Values(Case{R"({"minItems":1})", "[]", "",
                                              "deveria ter pelo menos 1 itens"},
                                         Case{R"({"maxItems":1,"items":{"type":"string"}})",
                                              "[1,2]", "", "deveria ter no maximo 1 itens"},
                                         Case{R"({"items":{"type":"string"}})", R"(["a",1])", "[1]",
                                              "deveria ser um texto"},
                                         Case{R"({"items":{"items":{"type":"string"}}})",
                                              R"([[],["a",1]])", "[1][1]", "deveria ser um texto"},
                                         Case{R"({"items":1})", R"(["a",1])", "", ""}));

INSTANTIATE_TEST_SUITE_P(
    Objects, ValidateTest,
    testing::Values(
        Case{R"({"required":["a","b"]})", R"({"a":1})", "b", "e obrigatorio"},
        Case{R"({"required":["a","b"]})", "{}", "a", "e obrigatorio"},
        Case{R"({"required":["a"],"additionalProperties":false})", R"({"b":1})", "a",
             "e obrigatorio"},
        Case{R"({"required":[1,"a"]})", R"({"a":null})", "", ""},
        Case{R"({"properties":{"a":{"type":"string"}},"additionalProperties":false})",
             R"({"z":1,"a":1})", "z", "nao e um campo desta ferramenta"},
        Case{R"({"properties":{"a":{"type":"string"}},"additionalProperties":false})",
             R"({"a":1,"z":1})", "a", "deveria ser um texto"},
        Case{R"({"properties":{"a":1},"additionalProperties":false})", R"({"a":1})", "a",
             "nao e um campo desta ferramenta"},
        Case{R"({"additionalProperties":true})", R"({"z":1})", "", ""},
        Case{R"({"additionalProperties":0})", R"({"z":1})", "", ""},
        Case{R"({"properties":{"a":{"required":["q"]}}})", R"({"a":{}})", "a.q", "e obrigatorio"},
        Case{R"({"properties":{"":{"required":[""]}}})", R"({"":{}})", "", "e obrigatorio"},
        Case{R"({"properties":{"a":{"items":{"properties":{"b":{"items":{"maximum":2}}}}}}})",
             R"({"a":[{"b":[1]},{"c":9,"b":[0,1,3]}]})", "a[1].b[2]", "deveria ser no maximo 2"}));

// Numbers that no JSON text yields.
TEST(ValidateNumberTest, OnlyFiniteOnesAreNumbers) {
  std::string field;
  std::string reason;
  for (const double number :
       {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
    for (const char* type : {R"({"type":"number"})", R"({"type":"integer"})"})
      EXPECT_FALSE(Validate(Parse(type), core::Json::Number(number), field, reason)) << type;
  core::Json schema = Parse("{}");
  schema.Set("minItems", core::Json::Number(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_TRUE(Validate(schema, core::Json::Array(), field, reason)) << reason;
}

}  // namespace
}  // namespace zorvik::authoring
