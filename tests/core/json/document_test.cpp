#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "core/json.h"

namespace zorvik::core {
namespace {

TEST(JsonTest, LookupsThatFindNothingCanBeChained) {
  Json object;
  object.Set("n", Json::Int(1));
  object.Set("list", Json::Array()).Add(Json::Text("a"));
  for (const Json* absent : {&object.At("absent"), &object[0], &object.At("n").At("deeper"),
                             &object.At("list").At("a"), &object.At("list")[1]})
    EXPECT_EQ(absent, &Nothing);
  EXPECT_EQ(object.At("absent")[3].At("x").TextOr("fallback"), "fallback");
  EXPECT_EQ(object.At("list")[0].TextOr("fallback"), "a");
  EXPECT_TRUE(object.Has("n"));
  EXPECT_FALSE(object.Has("nn"));
  EXPECT_FALSE(object.At("list").Has("a"));
}

// A pointer would pass for a truth value.
static_assert(!std::is_constructible_v<Json::Value, int*>);
static_assert(!std::is_constructible_v<Json::Value, std::nullptr_t>);

TEST(JsonTest, IsWrittenAsOneExpression) {
  const Json id = Json::Text("seven");
  const std::string text = "text";
  Json large = Json::Array({Json::Text("one that is too long to stand inside the string object")});
  const std::string* const element = &large.items[0].text;
  Json message = Json::Object({{"id", id},
                               {"copied", text},
                               {"part", std::string_view(text).substr(1, 2)},
                               {"flags", Json::Array({true, false, Json()})},
                               {"counts", Json::Array({-1, 4294967295U, 1LL << 53, 0.5F, 0.25})},
                               {"empty", Json::Object({})},
                               {"large", std::move(large)}});
  EXPECT_EQ(WriteJson(message),
            R"({"id":"seven","copied":"text","part":"ex","flags":[true,false,null],)"
            R"("counts":[-1,4294967295,9007199254740992,0.5,0.25],"empty":{},)"
            R"("large":["one that is too long to stand inside the string object"]})");
  EXPECT_EQ(&message.At("large")[0].text, element);  // It was moved there.
  EXPECT_EQ(id.text, "seven");

  *message.Find("id") = Json::Array();
  EXPECT_EQ(message.Find("absent"), nullptr);
  EXPECT_EQ(message.Find("id")->Find("id"), nullptr);
  EXPECT_EQ(message.At("id").kind, Json::Kind::Array);
}

TEST(JsonTest, ReadsScalarsOfItsKindOnly) {
  EXPECT_EQ(Json::Number(-2.9).IntOr(7), -2);
  EXPECT_EQ(Json::Number(9223372036854774784.0).IntOr(7), 9223372036854774784);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double number : {0x1p63, -0x1p63, -1e300, nan})
    EXPECT_EQ(Json::Number(number).IntOr(7), std::numeric_limits<std::int64_t>::min()) << number;
  for (const double number : {-0.0, 0x1p53, -0x1p53})
    EXPECT_TRUE(Json::Number(number).IsInteger()) << number;
  for (const double number : {-2.9, 0x1p53 + 2, -0x1p63, nan, 1e300 * 1e300})
    EXPECT_FALSE(Json::Number(number).IsInteger()) << number;
  EXPECT_EQ(Json::Int(9007199254740993).number, 0x1p53);
  EXPECT_EQ(Json::Text("1").IntOr(7), 7);
  EXPECT_FALSE(Json::Text("1").IsInteger());
  EXPECT_TRUE(Json::Int(0).BoolOr(true));
  EXPECT_FALSE(Json::Bool(false).BoolOr(true));
}

TEST(JsonTest, SetKeepsThePlaceOfAKeyAndDropsWhatIsNoObject) {
  Json object = Json::Text("a key that is too long to stand inside the string object");
  object.Set(object.text, Json::Int(1));  // The key is part of what is dropped.
  object.Set("b", Json::Int(2));
  EXPECT_EQ(&object.Set(object.fields[0].first, Json::Text("new")), &object.fields[0].second);
  EXPECT_EQ(WriteJson(object),
            R"({"a key that is too long to stand inside the string object":"new","b":2})");

  Json list = object;
  list.Add(Json::Int(3));
  EXPECT_EQ(WriteJson(list), "[3]");
  EXPECT_TRUE(list.fields.empty());
  EXPECT_EQ(object.fields.size(), 2U);
}

TEST(JsonTest, IsWrittenWithRoomForALineFeedBehindABigText) {
  const std::string written = WriteJson(Json::Text(std::string(1'000'000, 'A')));
  EXPECT_EQ(written.size(), 1'000'002U);
  EXPECT_GT(written.capacity(), written.size());
  EXPECT_LT(written.capacity(), 1'200'000U);
}

}  // namespace
}  // namespace zorvik::core
