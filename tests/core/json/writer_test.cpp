#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

#include "core/json.h"

namespace zorvik::core {
namespace {

using namespace std::string_literals;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(JsonWriterTest, Numbers) {
  const struct {
    double number;
    const char* text;
  } cases[] = {
      {0, "0"},
      {-0.0, "0"},
      {1, "1"},
      {-100000, "-100000"},
      {0.25, "0.25"},
      {0.001, "0.001"},
      {0.1, "0.10000000000000001"},
      {-2.4, "-2.3999999999999999"},
      {0.0001, "0.0001"},
      {0.00001, "1.0000000000000001e-05"},
      {123456.5, "123456.5"},
      {123456789012345678.0, "123456789012345680"},
      {9223372036854774784.0, "9223372036854774784"},
      {9223372036854775808.0, "9.2233720368547758e+18"},
      {-9223372036854775808.0, "-9223372036854775808"},
      {-9223372036854777856.0, "-9.2233720368547779e+18"},
      {1e19, "1e+19"},
      {1.5e300, "1.5000000000000001e+300"},
      {5e-324, "4.9406564584124654e-324"},
      {std::numeric_limits<double>::quiet_NaN(), "0"},
      {kInfinity, "0"},
      {-kInfinity, "0"},
  };
  for (const auto& c : cases) EXPECT_EQ(WriteJson(Json::Number(c.number)), c.text);
}

TEST(JsonWriterTest, FractionsLookAsFromPrintf) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 100'000; ++i) {
    // Odd numerators over powers of two and of ten: ties, carries to the next decade, short ends.
    const double numerator = static_cast<double>(random() >> (11 + random() % 53)) + 0.5;
    const double number = std::ldexp(numerator, -static_cast<int>(random() % 110)) /
                          (random() % 2 == 0 ? 1.0 : std::pow(10.0, random() % 20));
    char expected[32];
    std::snprintf(expected, sizeof expected, "%.17g", number);
    if (std::trunc(number) == number) continue;
    ASSERT_EQ(WriteJson(Json::Number(number)), expected);
  }
}

TEST(JsonWriterTest, Texts) {
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
      {std::string(3'000, '\x02'),
       [] {
         std::string text = "\"";
         for (int i = 0; i < 3'000; ++i) text += "\\u0002";
         return text + "\"";
       }()},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(WriteJson(Json::Text(c.text)), c.written);
    Json object;
    object.Set(c.text, Json());
    EXPECT_EQ(WriteJson(object), "{" + c.written + ":null}");
  }
}

TEST(JsonWriterTest, Containers) {
  Json document = Json::Object();
  document.Set("list", Json::Array()).Add(Json::Bool(true));
  document.Set("empty", Json::Array());
  Json& inner = document.Set("object", Json::Object());
  inner.Set("none", Json::Object());
  inner.Set("b", Json::Bool(false));
  document.fields[0].second.Add(Json());
  EXPECT_EQ(WriteJson(document),
            R"({"list":[true,null],"empty":[],"object":{"none":{},"b":false}})");
}

TEST(JsonWriterTest, LeavesRoomForALineFeedBehindABigText) {
  Json document;
  document.Set("image", Json::Text(std::string(1'000'000, 'A')));
  std::string written = WriteJson(document);
  EXPECT_EQ(written.size(), 1'000'012U);
  EXPECT_GT(written.capacity(), written.size());
  EXPECT_LT(written.capacity(), 1'200'000U);
}

}  // namespace
}  // namespace zorvik::core
