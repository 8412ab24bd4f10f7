#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/json/memory.h"

namespace zorvik::core {

// The one document type: every message, editor record and tool schema is a Json.
//
// A plain value with public members; only the member that belongs to `kind` carries meaning. Copies
// are deep and a value owns everything below it. Objects are ordered lists: keys are written in the
// order in which they were first set, and looked up by a scan from the start. Threads may use
// documents of their own at the same time, and hand them to each other.
struct Json {
  enum class Kind : std::uint8_t {
    Null = 0,
    Bool = 1,
    Number = 2,
    Text = 3,
    Array = 4,
    Object = 5,
  };
  using Field = std::pair<std::string, Json>;
  // The parts of a message that is written as one expression, as in
  // Object({{"id", id}, {"result", std::move(result)}}).
  struct Value;
  struct Member;

  Kind kind = Kind::Null;
  bool boolean = false;
  double number = 0;
  std::string text;  // UTF-8 by convention, not checked; may hold zero bytes.
  std::vector<Json, ListAllocator<Json>> items;
  std::vector<Field, ListAllocator<Field>> fields;

  // A null. Not defaulted: some compilers would look into `fields` while Field is still incomplete.
  constexpr Json() noexcept {}

  static Json Bool(bool value);
  static Json Number(double value);
  // A Number; magnitudes above 2^53 are rounded to the nearest double.
  static Json Int(long long value);
  static Json Text(std::string value);
  static Json Array();
  static Json Array(std::initializer_list<Value> values);
  static Json Object();
  // The caller keeps the keys different from each other; they aren't compared.
  static Json Object(std::initializer_list<Member> members);

  // The value of the first field of that key; `Nothing` when there is none or this is no object.
  const Json& At(std::string_view key) const;
  // The value of the first field of that key; null when there is none or this is no object.
  Json* Find(std::string_view key);
  // The element at `index`; `Nothing` past the end or when this is no array.
  const Json& operator[](std::size_t index) const;

  std::string TextOr(std::string fallback) const;
  // The number cut toward zero. One beyond the signed 64-bit range, or NaN, yields the least value
  // of that range. `fallback` is for values that are no numbers.
  std::int64_t IntOr(std::int64_t fallback) const;
  bool BoolOr(bool fallback) const;
  // True for a finite whole number of magnitude at most 2^53 (inclusive).
  bool IsInteger() const;
  bool Has(std::string_view key) const;

  // Gives the field `key` a new value in its old place, or appends it. A value that is no object
  // becomes an empty one first and loses what it held. Returns the stored value.
  Json& Set(std::string_view key, Json value);
  // Appends to the array. A value that is no array becomes an empty one first and loses what it
  // held. Returns the stored value.
  Json& Add(Json value);
};

// A value on its way into a message. An initializer list hands out constant elements; a mutable
// member can be moved out of them all the same.
struct Json::Value {
  Value(Json value) : json(std::move(value)) {}
  Value(std::string value) : json(Text(std::move(value))) {}
  Value(std::string_view value) : json(Text(std::string(value))) {}
  Value(const char* value) : json(Text(value)) {}
  Value(std::nullptr_t) = delete;
  // Templates, since they convert nothing: a plain `bool` would take any pointer.
  Value(std::floating_point auto value) : json(Number(static_cast<double>(value))) {}
  Value(std::integral auto value)
      : json(std::same_as<decltype(value), bool> ? Bool(value != 0)
                                                 : Number(static_cast<double>(value))) {}

  mutable Json json;
};

struct Json::Member {
  std::string_view key;
  Value value;
};

// The shared null that failed lookups return, so that they can be chained without checks.
extern const Json Nothing;

// Reads one JSON document of at most 16,777,216 bytes into `out`. On failure returns false and
// puts a Portuguese message into `error`; `out` then holds an unusable rest.
//
// Objects hold at most 65,536 fields; a scalar may stand inside at most 64 containers. A repeated
// key keeps its first place and takes the last value. The cost is linear in the text's length.
bool ParseJson(std::string_view text, Json& out, std::string& error);

// The compact text of a value: no white space, no line feed. Whole numbers are written as integers,
// others with 17 significant digits, and NaN and the infinities as 0.
std::string WriteJson(const Json& value);
// Appends that text to `text`.
void AppendJson(const Json& value, std::string& text);

}  // namespace zorvik::core
