#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include "core/json.h"

namespace zorvik::core {
namespace {

using namespace std::string_literals;

// What reading `text` and writing the result yields, or the message of a failure.
std::string Reread(std::string_view text) {
  Json document = Json::Text("what was here before");
  std::string error = "what was here before";
  const bool read = ParseJson(text, document, error);
  EXPECT_EQ(read, error.empty());
  return read ? WriteJson(document) : error;
}

std::string Repeat(std::string_view part, std::size_t times) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i) text += part;
  return text;
}

struct Case {
  std::string text;
  std::string result;
};

TEST(JsonReaderTest, AcceptsAndRefuses) {
  const Case cases[] = {
      {"", "documento vazio"},
      {" \t\r\n", "documento vazio"},
      {"\xEF\xBB\xBF", "documento vazio"},
      {"\xEF\xBB\xBF 1 ", "1"},
      {"\xEF\xBB", "esperava um numero"},
      {" \xEF\xBB\xBF", "esperava um numero"},
      {"\f1", "esperava um numero"},
      {"1\f", "sobrou texto depois do documento"},
      {"0x10", "sobrou texto depois do documento"},
      {"truex", "sobrou texto depois do documento"},
      {"1.2.3", "sobrou texto depois do documento"},
      {"[ true , false , null ]", "[true,false,null]"},
      {"tru", "esperava um numero"},
      {"nul", "esperava um numero"},
      {"NaN", "esperava um numero"},
      {"[", "documento vazio"},
      {"[1", "esperava \",\" ou \"]\""},
      {"[1 2]", "esperava \",\" ou \"]\""},
      {"[1,]", "esperava um numero"},
      {"[1,", "documento vazio"},
      {"[ ]", "[]"},
      {"{", "esperava um texto"},
      {"{ }", "{}"},
      {"{1:2}", "esperava um texto"},
      {"{\"a\"", "esperava \":\""},
      {"{\"a\" 1}", "esperava \":\""},
      {"{\"a\":", "documento vazio"},
      {"{\"a\":1", "esperava \",\" ou \"}\""},
      {"{\"a\":1]", "esperava \",\" ou \"}\""},
      {"{\"a\":1,}", "esperava um texto"},
      {"{ \"a\" : 1 , \"b\" : [ ] }", "{\"a\":1,\"b\":[]}"},
      {"{\"a\":1,\"a\":2,\"b\":3}", "{\"a\":2,\"b\":3}"},
      {"{\"b\":{\"x\":1},\"a\":2,\"b\":[3]}", "{\"b\":[3],\"a\":2}"},
      {"{\"a\":{\"x\":1},\"a\":null}", "{\"a\":null}"},
      {"{\"\":1,\"\\u0000\":2,\"\\u0061\":3,\"a\":4}", "{\"\":1,\"\\u0000\":2,\"a\":4}"},
  };
  for (const Case& c : cases) EXPECT_EQ(Reread(c.text), c.result) << c.text;
}

TEST(JsonReaderTest, Texts) {
  const Case cases[] = {
      {R"("\"\\\/\b\f\n\r\t")", R"("\"\\/\b\f\n\r\t")"},
      {R"("\u0041\u00e9\u20AC\ud83d\ude00")", "\"A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\""},
      {R"("\uDBFF\uDFFF\uDE00\u0000")", "\"\xF4\x8F\xBF\xBF\xED\xB8\x80\\u0000\""},
      {"\"12345678\x7F\xFF\xC0 after one word\"", "\"12345678\x7F\xFF\xC0 after one word\""},
      {"\"abc", "texto sem fechar"},
      {"\"abc\\", "texto sem fechar"},
      {"\"a\tb\"", "byte de controle dentro de um texto"},
      {"\"1234567\x1F\"", "byte de controle dentro de um texto"},
      {"\"\0\""s, "byte de controle dentro de um texto"},
      {R"("\a")", "escape desconhecido"},
      {R"("\U0041")", "escape desconhecido"},
      {R"("\u12)", "escape \\u incompleto"},
      {R"("\u12g4")", "escape \\u incompleto"},
      {R"("\u+123")", "escape \\u incompleto"},
      {R"("\ud83d")", "par substituto sem a segunda metade"},
      {R"("\ud83d\n")", "par substituto sem a segunda metade"},
      {R"("\ud83d\)", "par substituto sem a segunda metade"},
      {R"("\ud83d\u0041")", "par substituto invalido"},
      {R"("\ud83d\ud83d")", "par substituto invalido"},
      {R"("\ud83d\u12)", "par substituto invalido"},
      {R"("\ud83d\uxxxx")", "par substituto invalido"},
  };
  for (const Case& c : cases) EXPECT_EQ(Reread(c.text), c.result) << c.text;
}

TEST(JsonReaderTest, Numbers) {
  const struct {
    std::string text;
    double value;
  } cases[] = {
      {"+5", 5},
      {"-0", -0.0},
      {"007", 7},
      {".5", 0.5},
      {"-5.", -5},
      {"1.e2", 100},
      {"1E+2", 100},
      {"25e-1", 2.5},
      {"0e999", 0},
      {"-0.000e-99999999999999999999", -0.0},
      {"1e", 1},
      {"1E+", 1},
      {"-2.5e-", -2.5},
      {"0.3e", 0.30000000000000004},
      {"0.3", 0.3},
      {"9007199254740993", 9007199254740992.0},
      {"9007199254740993.0000000000000000001", 9007199254740994.0},
      {"9007199254740995", 9007199254740996.0},
      {"123456789012345678", 123456789012345678.0},
      {"18446744073709551615", 18446744073709551615.0},
      {"18446744073709551617", 18446744073709551617.0},
      {"2.3999999999999999", 2.4},
      {"8.7e22", 8.7e22},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
      {"2.2250738585072014e-308", std::numeric_limits<double>::min()},
      {"1e-320", 1e-320},
      {"2.4703282292062328e-324", std::numeric_limits<double>::denorm_min()},
      {"1" + std::string(400, '0') + "e-400", 1},
      {"0." + std::string(400, '0') + "1e401", 1},
  };
  for (const auto& c : cases) {
    Json number;
    std::string error;
    ASSERT_TRUE(ParseJson(c.text, number, error)) << c.text << ": " << error;
    EXPECT_EQ(number.number, c.value) << c.text;
    EXPECT_EQ(std::signbit(number.number), std::signbit(c.value)) << c.text;
  }
  for (const char* text : {"-", "+", ".", "-.", "e5", "-+1", "- 1", ".e1", "Infinity"})
    EXPECT_EQ(Reread(text), "esperava um numero") << text;
  for (const std::string& text :
       {"1e400"s, "-1e-400"s, "1e99999999999999999999"s, "1.7976931348623159e308"s, "2.47e-324"s,
        std::string(400, '9'), std::string(400, '9') + "e"})
    EXPECT_EQ(Reread(text), "numero fora da faixa") << text;
}

TEST(JsonReaderTest, Limits) {
  const auto nested = [](std::size_t depth, const char* inside) {
    return Repeat("[", depth) + inside + Repeat("]", depth);
  };
  EXPECT_EQ(Reread(nested(65, "")), nested(65, ""));
  EXPECT_EQ(Reread(nested(64, "1")), nested(64, "1"));
  EXPECT_EQ(Reread(nested(65, " ")), nested(65, ""));
  EXPECT_EQ(Reread(nested(65, "1")), "JSON encaixado demais");
  for (const char* beyond : {"1,", "1,2,x", "1,,"})
    EXPECT_EQ(Reread(nested(65, beyond)), "JSON encaixado demais") << beyond;
  EXPECT_EQ(Reread(Repeat("[", 65)), "JSON encaixado demais");
  EXPECT_EQ(Reread(Repeat("{\"a\":", 65)), "JSON encaixado demais");

  const std::size_t limit = 16'777'216;
  EXPECT_EQ(Reread(std::string(limit - 1, ' ') + "1"), "1");
  EXPECT_EQ(Reread(std::string(limit, ' ') + "1"), "documento JSON grande demais");
}

TEST(JsonReaderTest, RepeatedKeysInLargeObjects) {
  // Key lengths and contents that share beginnings, ends and sizes.
  std::string text = "{";
  Json expected = Json::Object();
  for (int i = 0; i < 6'000; ++i) {
    const int which = i * 7'919 % 2'000;
    const std::string key =
        std::string(static_cast<std::size_t>(which % 40), 'k') + std::to_string(which / 7) + "tail";
    text += "\"" + key + "\":" + std::to_string(i) + (i < 5'999 ? "," : "}");
    expected.Set(key, Json::Int(i));
  }
  EXPECT_EQ(Reread(text), WriteJson(expected));

  // Keys in order, of which only the last one comes again.
  std::string ordered = "{";
  for (int i = 10; i < 60; ++i) ordered += "\"k" + std::to_string(i) + "\":1,";
  EXPECT_EQ(Reread(ordered + "\"k59\":2}"), ordered.substr(0, ordered.size() - 2) + "2}");
}

// A full object like the one before it, and then the same key on and on. Looking through all fields
// for each repeat would take half a minute.
TEST(JsonReaderTest, RepeatsInAFullObjectTakeTimeInProportion) {
  std::string full = "{\"k0\":0";
  for (int i = 1; i < 65'535; ++i) full += ",\"k" + std::to_string(i) + "\":1";
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Reread("[" + full + "}," + full + Repeat(",\"k0\":0", 200'000) + "}]"),
            "[" + full + "}," + full + "}]");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(JsonReaderTest, CountsFieldsWithoutRepeatsUpToTheLimit) {
  std::string full = "{\"k0\":0";
  for (int i = 1; i < 65'536; ++i) full += ",\"k" + std::to_string(i) + "\":1";
  EXPECT_EQ(Reread(full + "}"), full + "}");
  EXPECT_EQ(Reread(full + ",\"new\":1}"), "objeto com campos demais");
  EXPECT_EQ(Reread(full + ",\"k0\":1}"), "objeto com campos demais");
  EXPECT_EQ(Reread(full + ",\"k0\":x}"), "esperava um numero");
  // A repeat among the first ones leaves room for one more, and for no other.
  const std::string repeating = "{\"k0\":1," + full.substr(1);
  EXPECT_EQ(Reread(repeating + "}"), full + "}");
  EXPECT_EQ(Reread(repeating + ",\"new\":1}"), "objeto com campos demais");
  EXPECT_EQ(Reread("{" + Repeat("\"a\":1,", 70'000) + "\"a\":2}"), "{\"a\":2}");
}

}  // namespace
}  // namespace zorvik::core
