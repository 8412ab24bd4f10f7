#pragma once

#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "core/json.h"

// Documents made from a fuzzer's bytes, so that small changes of the bytes are small
// changes of the structure and deep places are reached.
namespace zorvik::fuzz {

using core::Json;

// Hands out a run of bytes; zeros when it is used up.
class Bytes {
 public:
  explicit Bytes(std::string_view bytes) : left(bytes) {}

  bool Empty() const { return left.empty(); }
  std::size_t Below(std::size_t bound) {
    const std::string byte = Text(1);
    return byte.empty() ? 0 : static_cast<unsigned char>(byte[0]) % bound;
  }
  std::string Text(std::size_t length) {
    std::string text(left.substr(0, length));
    left.remove_prefix(text.size());
    return text;
  }
  template <typename List>
  const auto& Pick(const List& list) {
    return list[Below(list.size())];
  }

 private:
  std::string_view left;
};

inline std::string AnyKey(Bytes& bytes) {
  static const std::array<std::string, 7> kKeys = {"a", "b", "ok", "x.y", "", "\xC3\xA9", "[0]"};
  return bytes.Pick(kKeys);
}

inline double AnyNumber(Bytes& bytes) {
  const auto small = static_cast<double>(bytes.Below(9));
  if (small > 0) return small / 2 - 1.5;
  double number = 0;
  const std::string bits = bytes.Text(sizeof number);
  std::memcpy(&number, bits.data(), bits.size());
  return number;
}

// `room` is the number of values that may stand inside each other.
inline Json AnyValue(Bytes& bytes, int room = 65) {
  Json value;
  switch (bytes.Below(room > 1 ? 7 : 4)) {
    case 0:
      return value;
    case 1:
      return Json::Bool(bytes.Below(2) == 1);
    case 2:
      return Json::Number(AnyNumber(bytes));
    case 3:
      return Json::Text(bytes.Text(bytes.Below(12)));
    case 4:
      value = Json::Array();
      for (auto more = bytes.Below(5); more > 0; --more) value.Add(AnyValue(bytes, room - 1));
      return value;
    default:
      value = Json::Object();
      for (auto more = bytes.Below(5); more > 0; --more) {
        const std::string key = AnyKey(bytes);
        value.Set(key, AnyValue(bytes, room - 1));
      }
      return value;
  }
}

// A value that fits the schema, or nearly: with a limit just kept or just passed, a required field
// left out, a stranger put in, another kind in its place.
inline Json Fitting(const Json& schema, Bytes& bytes) {
  if (bytes.Below(24) == 23) return AnyValue(bytes, 3);
  if (const Json& words = schema.At("enum"); !words.items.empty()) return bytes.Pick(words.items);
  const auto near = [&](const char* least, const char* most, double step) {
    const double low = schema.At(least).number;
    const double high = schema.Has(most) ? schema.At(most).number : low + 3;
    return bytes.Pick(std::array{low, low + 1, high, low - step, high + step, (low + high) / 2});
  };
  const std::string type = schema.At("type").TextOr("");
  if (type == "boolean") return Json::Bool(bytes.Below(2) == 1);
  if (type == "number") return Json::Number(near("minimum", "maximum", 0.001));
  if (type == "integer") return Json::Number(near("minimum", "maximum", 1));
  if (type == "string") {
    std::string text;
    const char* const letter = bytes.Below(2) == 0 ? "a" : "\xE2\x82\xAC";
    for (double more = near("minLength", "maxLength", 1); more >= 1 && text.size() < 3000; --more)
      text += letter;
    return Json::Text(text);
  }
  Json value;
  if (type == "array") {
    value = Json::Array();
    for (double more = near("minItems", "maxItems", 1); more >= 1 && value.items.size() < 300;
         --more)
      value.Add(Fitting(schema.At("items"), bytes));
    return value;
  }
  if (type != "object") return AnyValue(bytes, 4);
  value = Json::Object();
  std::string required;
  for (const Json& name : schema.At("required").items) required += "/" + name.text + "/";
  for (const auto& [key, field] : schema.At("properties").fields) {
    const bool needed = required.find("/" + key + "/") != std::string::npos;
    if (needed ? bytes.Below(32) != 31 : bytes.Below(3) == 1) value.Set(key, Fitting(field, bytes));
  }
  if (bytes.Below(16) == 15) value.Set(AnyKey(bytes), AnyValue(bytes, 3));
  return value;
}

}  // namespace zorvik::fuzz
