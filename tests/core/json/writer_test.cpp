#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "core/json.h"

namespace zorvik::core {
namespace {

using namespace std::string_literals;

std::string Object(const std::string& key, const std::string& text) {
  return "{\"" + key + "\":\"" + text + "\"}";
}

TEST(JsonWriterTest, Texts) {
  std::string controls;
  for (int i = 0; i < 3'000; ++i) controls += "\\u0002";
  const std::string plain(3'000, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"plain / and \x7F\xC3\xA9\xFF", "plain / and \x7F\xC3\xA9\xFF"},
      {"\"\\\b\t\n\f\r", R"(\"\\\b\t\n\f\r)"},
      {"\0\x01\x1F"s, R"(\u0000\u0001\u001f)"},
      {"a run of some words\n" + plain + "\"", "a run of some words\\n" + plain + "\\\""},
      {std::string(3'000, '\x02'), controls}};
  for (const auto& [text, written] : cases) {
    Json object;
    object.Set(text, Json::Text(text));
    EXPECT_EQ(WriteJson(object), Object(written, written));
  }
}

TEST(JsonWriterTest, LeavesRoomForALineFeedBehindABigText) {
  const std::string written = WriteJson(Json::Text(std::string(1'000'000, 'A')));
  EXPECT_EQ(written.size(), 1'000'002U);
  EXPECT_GT(written.capacity(), written.size());
  EXPECT_LT(written.capacity(), 1'200'000U);
}

}  // namespace
}  // namespace zorvik::core
