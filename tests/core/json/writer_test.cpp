#include <gtest/gtest.h>

#include <string>

#include "core/json.h"

namespace zorvik::core {
namespace {

using namespace std::string_literals;

TEST(JsonWriterTest, Texts) {
  std::string escapes = "\"";
  for (int i = 0; i < 3'000; ++i) escapes += "\\u0002";
  const struct {
    std::string text;
    std::string written;
  } cases[] = {
      {"", R"("")"},
      {"plain / and \x7F\xC3\xA9\xFF", "\"plain / and \x7F\xC3\xA9\xFF\""},
      {"\"\\\b\t\n\f\r", R"("\"\\\b\t\n\f\r")"},
      {"\0\x01\x1F"s, R"("\u0000\u0001\u001f")"},
      {"a run of some words\n" + std::string(3'000, 'x') + "\"",
       "\"a run of some words\\n" + std::string(3'000, 'x') + "\\\"\""},
      {std::string(3'000, '\x02'), escapes + "\""},
  };
  for (const auto& c : cases) {
    Json object;
    object.Set(c.text, Json::Text(c.text));
    EXPECT_EQ(WriteJson(object), "{" + c.written + ":" + c.written + "}");
  }
}

TEST(JsonWriterTest, Containers) {
  Json document = Json::Object();
  Json& list = document.Set("list", Json::Array());
  for (const Json& item : {Json::Bool(true), Json(), Json::Int(7)}) list.Add(item);
  document.Set("empty", Json::Array());
  document.Set("object", Json::Object()).Set("none", Json::Object());
  EXPECT_EQ(WriteJson(document), R"({"list":[true,null,7],"empty":[],"object":{"none":{}}})");
}

TEST(JsonWriterTest, LeavesRoomForALineFeedBehindABigText) {
  const std::string written = WriteJson(Json::Text(std::string(1'000'000, 'A')));
  EXPECT_EQ(written.size(), 1'000'002U);
  EXPECT_GT(written.capacity(), written.size());
  EXPECT_LT(written.capacity(), 1'200'000U);
}

}  // namespace
}  // namespace zorvik::core
