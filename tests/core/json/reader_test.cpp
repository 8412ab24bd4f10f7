#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

// An object of `count` keys of its own, without the brace at its end.
std::string ManyFields(int count) {
  std::string text = "{\"k0\":0";
  for (int i = 1; i < count; ++i) text += ",\"k" + std::to_string(i) + "\":1";
  return text;
}

TEST(JsonReaderTest, Accepts) {
  const std::pair<std::string, std::string> cases[] = {
      {"\xEF\xBB\xBF 1 ", "1"},
      {"[ true , false , null , [ ] , { } ]", "[true,false,null,[],{}]"},
      {"{ \"a\" : 1 , \"b\" : [ ] }", "{\"a\":1,\"b\":[]}"},
      {"{\"a\":1,\"a\":2,\"b\":3}", "{\"a\":2,\"b\":3}"},
      {"{\"b\":{\"x\":1},\"a\":2,\"b\":[3]}", "{\"b\":[3],\"a\":2}"},
      {"{\"\":1,\"\\u0000\":2,\"\\u0061\":3,\"a\":4}", "{\"\":1,\"\\u0000\":2,\"a\":4}"},
      {R"("\"\\\/\b\f\n\r\t")", R"("\"\\/\b\f\n\r\t")"},
      {R"("\u0041\u00e9\u20AC\ud83d\ude00")", "\"A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\""},
      {R"("\uDBFF\uDFFF\uDE00\u0000")", "\"\xF4\x8F\xBF\xBF\xED\xB8\x80\\u0000\""},
      {R"("\u007f\u0080\u07ff\u0800\ud800\udc00")",
       "\"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xF0\x90\x80\x80\""},
      {"\"12345678\x7F\xFF\xC0 after one word\"", "\"12345678\x7F\xFF\xC0 after one word\""},
      {"\"" + Repeat("\\n34567890", 500) + "\"", "\"" + Repeat("\\n34567890", 500) + "\""}};
  for (const auto& [text, result] : cases) EXPECT_EQ(Reread(text), result) << text;
  for (const std::string& text :
       {R"("\u0001\u001f")"s, "\"a run of some words\\n" + Repeat("x", 3'000) + "\\\"\"",
        "\"" + Repeat("\\u0002", 3'000) + "\""}) {
    const std::string object = std::string("{").append(text).append(":").append(text).append("}");
    EXPECT_EQ(Reread(object), object);
  }
}

TEST(JsonReaderTest, Refuses) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"documento vazio", {"", " \t\r\n", "\xEF\xBB\xBF", "[", "[1,", "{\"a\":"}},
      {"esperava um numero",
       {"\xEF\xBB", " \xEF\xBB\xBF", "\f1", "tru", "nul", "NaN", "[1,]", "-", "+", ".", "-.", "e5",
        "-+1", "- 1", ".e1", "Infinity"}},
      {"sobrou texto depois do documento", {"1\f", "0x10", "truex", "1.2.3"}},
      {"esperava \",\" ou \"]\"", {"[1", "[1 2]"}},
      {"esperava um texto", {"{", "{1:2}", "{\"a\":1,}"}},
      {"esperava \":\"", {"{\"a\"", "{\"a\" 1}"}},
      {"esperava \",\" ou \"}\"", {"{\"a\":1", "{\"a\":1]"}},
      {"texto sem fechar", {"\"abc", "\"abc\\"}},
      {"byte de controle dentro de um texto", {"\"a\tb\"", "\"1234567\x1F\"", "\"\0\""s}},
      {"escape desconhecido", {R"("\a")", R"("\U0041")"}},
      {"escape \\u incompleto", {R"("\u12)", R"("\u12g4")", R"("\u+123")"}},
      {"par substituto sem a segunda metade", {R"("\ud83d")", R"("\ud83d\n")", R"("\ud83d\)"}},
      {"par substituto invalido",
       {R"("\ud83d\u0041")", R"("\ud83d\ud83d")", R"("\ud83d\u12)", R"("\ud83d\uxxxx")",
        R"("\ud83d\ue000")"}},
      {"JSON encaixado demais", {Repeat("[", 65), Repeat("{\"a\":", 65)}}};
  for (const auto& [message, texts] : cases)
    for (const std::string& text : texts) EXPECT_EQ(Reread(text), message) << text;
}

TEST(JsonReaderTest, Limits) {
  const auto nested = [](std::size_t depth, const std::string& inside) {
    return Repeat("[", depth) + inside + Repeat("]", depth);
  };
  EXPECT_EQ(Reread(nested(64, "1")), nested(64, "1"));
  EXPECT_EQ(Reread(nested(65, " ")), nested(65, ""));
  for (const char* beyond : {"1", "1,", "1,2,x", "1,,"})
    EXPECT_EQ(Reread(nested(65, beyond)), "JSON encaixado demais") << beyond;

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
  const std::string full = ManyFields(65'535);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Reread("[" + full + "}," + full + Repeat(",\"k0\":0", 200'000) + "}]"),
            "[" + full + "}," + full + "}]");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(JsonReaderTest, CountsFieldsWithoutRepeatsUpToTheLimit) {
  const std::string full = ManyFields(65'536);
  EXPECT_EQ(Reread(full + "}"), full + "}");
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
