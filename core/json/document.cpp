#include <cmath>
#include <limits>

#include "core/json.h"

namespace zorvik::core {
namespace {

// 2^63 and 2^53. A double at or above the first does not fit a signed 64-bit integer.
constexpr double kInt64Bound = 9'223'372'036'854'775'808.0;
constexpr double kExactIntegerBound = 9'007'199'254'740'992.0;

// Position of the first field of that key, or the number of fields.
std::size_t FindField(const decltype(Json::fields)& fields, std::string_view key) {
  std::size_t at = 0;
  while (at < fields.size() && fields[at].first != key) ++at;
  return at;
}

}  // namespace

const Json Nothing;

Json Json::Bool(bool value) {
  Json json;
  json.kind = Kind::Bool;
  json.boolean = value;
  return json;
}

Json Json::Number(double value) {
  Json json;
  json.kind = Kind::Number;
  json.number = value;
  return json;
}

Json Json::Int(long long value) {
  return Number(static_cast<double>(value));
}

Json Json::Text(std::string value) {
  Json json;
  json.kind = Kind::Text;
  json.text = std::move(value);
  return json;
}

Json Json::Array() {
  Json json;
  json.kind = Kind::Array;
  return json;
}

Json Json::Array(std::initializer_list<Value> values) {
  Json json = Array();
  json.items.reserve(values.size());
  for (const Value& value : values) json.items.push_back(std::move(value.json));
  return json;
}

Json Json::Object() {
  Json json;
  json.kind = Kind::Object;
  return json;
}

Json Json::Object(std::initializer_list<Member> members) {
  Json json = Object();
  json.fields.reserve(members.size());
  for (const Member& member : members)
    json.fields.emplace_back(member.key, std::move(member.value.json));
  return json;
}

const Json& Json::At(std::string_view key) const {
  if (kind != Kind::Object) return Nothing;
  const std::size_t at = FindField(fields, key);
  return at < fields.size() ? fields[at].second : Nothing;
}

Json* Json::Find(std::string_view key) {
  if (kind != Kind::Object) return nullptr;
  const std::size_t at = FindField(fields, key);
  return at < fields.size() ? &fields[at].second : nullptr;
}

const Json& Json::operator[](std::size_t index) const {
  if (kind != Kind::Array || index >= items.size()) return Nothing;
  return items[index];
}

std::string Json::TextOr(std::string fallback) const {
  if (kind == Kind::Text) return text;
  return fallback;
}

std::int64_t Json::IntOr(std::int64_t fallback) const {
  if (kind != Kind::Number) return fallback;
  // Written so that NaN takes this way too: converting it would be undefined.
  if (!(number >= -kInt64Bound && number < kInt64Bound))
    return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(number);
}

bool Json::BoolOr(bool fallback) const {
  return kind == Kind::Bool ? boolean : fallback;
}

bool Json::IsInteger() const {
  return kind == Kind::Number && std::abs(number) <= kExactIntegerBound &&
         number == std::floor(number);
}

bool Json::Has(std::string_view key) const {
  return kind == Kind::Object && FindField(fields, key) < fields.size();
}

Json& Json::Set(std::string_view key, Json value) {
  if (kind != Kind::Object) {
    // The key may be a view of what is dropped here.
    std::string kept(key);
    *this = Object();
    return fields.emplace_back(std::move(kept), std::move(value)).second;
  }
  const std::size_t at = FindField(fields, key);
  if (at == fields.size()) fields.emplace_back(std::string(key), Json());
  fields[at].second = std::move(value);
  return fields[at].second;
}

Json& Json::Add(Json value) {
  if (kind != Kind::Array) *this = Array();
  return items.emplace_back(std::move(value));
}

}  // namespace zorvik::core
