#pragma once

#include <array>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <string>

#include "core/json.h"

// A second validator, which carries its path as text and asks one plain question after the other.
namespace zorvik::fuzz {

using core::Json;

struct Fault {
  std::string field;
  std::string reason;
};

struct Type {
  const char* name;
  const char* word;
  bool fits;
};

inline std::string SlowNumber(double number) {
  std::array<char, 400> text{};
  const bool whole = std::fabs(number) < 1e15 && std::fmod(number, 1) == 0;
  if (number == 0) number = 0;  // Zero has no sign.
  std::snprintf(text.data(), text.size(), whole ? "%.0f" : "%f", number);
  return text.data();
}

// Throws the first Fault.
inline void SlowCheck(const Json& schema, const Json& value, const std::string& path) {
  using Kind = Json::Kind;
  const auto fail = [&path](const std::string& reason) { throw Fault{path, reason}; };
  const bool number = value.kind == Kind::Number;

  const bool integer = number && std::fmod(value.number, 1) == 0 &&
                       std::fabs(value.number) <= 9'007'199'254'740'992.0;
  std::string unfit = "nulo";
  for (const auto& [type, word, fits] :
       std::initializer_list<Type>{{"object", "um objeto", value.kind == Kind::Object},
                                   {"array", "uma lista", value.kind == Kind::Array},
                                   {"string", "um texto", value.kind == Kind::Text},
                                   {"number", "um numero", number && std::isfinite(value.number)},
                                   {"integer", "um inteiro", integer},
                                   {"boolean", "verdadeiro ou falso", value.kind == Kind::Bool},
                                   {"null", "nulo", value.kind == Kind::Null}})
    if (schema.At("type").TextOr("") == type) unfit = fits ? "" : word;
  if (schema.At("type").kind == Kind::Text && !unfit.empty()) fail("deveria ser " + unfit);

  if (schema.At("enum").kind == Kind::Array) {
    bool found = false;
    std::string listed;
    for (const Json& entry : schema.At("enum").items) {
      const bool text = entry.kind == Kind::Text;
      listed += " " + (text ? entry.text : SlowNumber(entry.number));
      if (text && value.kind == Kind::Text && entry.text == value.text) found = true;
      if (number && entry.kind == Kind::Number && entry.number == value.number) found = true;
    }
    if (!found) fail("deveria ser um de:" + listed);
  }

  const auto bounds = [&](double quantity, const char* lower, const std::string& below,
                          const char* upper, const std::string& above, const std::string& unit) {
    const Json& least = schema.At(lower);
    const Json& most = schema.At(upper);
    // There are no lengths below zero.
    const auto limit = [&unit](double exact) {
      return unit.empty() ? exact : std::fmax(0, std::trunc(exact));
    };
    if (least.kind == Kind::Number && quantity < limit(least.number))
      fail(below + SlowNumber(least.number) + unit);
    if (most.kind == Kind::Number && quantity > limit(most.number))
      fail(above + SlowNumber(most.number) + unit);
  };
  if (number) {
    bounds(value.number, "minimum", "deveria ser no minimo ", "maximum", "deveria ser no maximo ",
           "");
  }
  if (value.kind == Kind::Text) {
    int length = 0;
    for (const char c : value.text) length += c >= 0 || static_cast<unsigned char>(c) > 0xBF;
    bounds(length, "minLength", "deveria ter pelo menos ", "maxLength", "deveria ter no maximo ",
           " caracteres");
  }
  if (value.kind == Kind::Array) {
    bounds(static_cast<double>(value.items.size()), "minItems", "deveria ter pelo menos ",
           "maxItems", "deveria ter no maximo ", " itens");
    for (std::size_t i = 0; i < value.items.size() && schema.At("items").kind == Kind::Object; ++i)
      SlowCheck(schema.At("items"), value[i], path + "[" + std::to_string(i) + "]");
  }
  if (value.kind != Kind::Object) return;
  const std::string prefix = path.empty() ? "" : path + ".";
  for (const Json& name : schema.At("required").items)
    if (name.kind == Kind::Text && !value.Has(name.text))
      throw Fault{prefix + name.text, "e obrigatorio"};
  const Json& open = schema.At("additionalProperties");
  for (const auto& [key, content] : value.fields) {
    const Json& declared = schema.At("properties").At(key);
    if (declared.kind == Kind::Object)
      SlowCheck(declared, content, prefix + key);
    else if (open.kind == Kind::Bool && !open.boolean)
      throw Fault{prefix + key, "nao e um campo desta ferramenta"};
  }
}

// The fault of `value`, or empty texts.
inline Fault SlowValidate(const Json& schema, const Json& value) {
  try {
    SlowCheck(schema, value, "");
    return {};
  } catch (const Fault& fault) {
    return fault;
  }
}

}  // namespace zorvik::fuzz
