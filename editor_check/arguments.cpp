#include "editor_check/arguments.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <utility>

#include "authoring/validate.h"

namespace zorvik::editor_check {

using core::Json;

namespace {

bool Passes(const Json& schema, const Json& value) {
  std::string field;
  std::string reason;
  return authoring::Validate(schema, value, field, reason);
}

// Looks at the schema's type alone, field by field.
Json Smallest(const Json& schema) {
  if (schema.Has("enum")) return schema.At("enum")[0];
  const std::string& type = schema.At("type").text;
  if (type == "string")
    return Json::Text(std::string(static_cast<std::size_t>(schema.At("minLength").IntOr(0)), 'a'));
  if (type == "boolean") return Json::Bool(false);
  if (type == "number" || type == "integer") {
    double value = 0;
    if (schema.Has("minimum")) value = std::max(value, schema.At("minimum").number);
    if (schema.Has("maximum")) value = std::min(value, schema.At("maximum").number);
    return Json::Number(type == "integer" ? std::ceil(value) : value);
  }
  if (type == "array") {
    Json list = Json::Array();
    for (std::int64_t count = schema.At("minItems").IntOr(0); count > 0; --count)
      list.Add(Smallest(schema.At("items")));
    return list;
  }
  Json object = Json::Object();
  for (const Json& name : schema.At("required").items)
    object.Set(name.text, Smallest(schema.At("properties").At(name.text)));
  return object;
}

}  // namespace

Json SmallestValid(const Json& schema) {
  Json value = Smallest(schema);
  return Passes(schema, value) ? value : Json();
}

std::vector<Json> Refused(const Json& schema) {
  const Json good = Smallest(schema);
  std::vector<Json> values = {Json(), Json::Array({good}), Json::Text("x"), Json::Object()};
  const auto with = [&](std::string_view key, Json value) {
    Json object = good;
    object.Set(key, std::move(value));
    values.push_back(std::move(object));
  };
  with("zorvik_editor_check", Json::Bool(true));
  for (const auto& [key, field] : schema.At("properties").fields)
    for (Json wrong : {Json(), Json::Array({Json::Object()}), Json::Text("x"), Json::Number(-1e300),
                       Json::Number(1e300), Json::Bool(true)})
      with(key, std::move(wrong));
  std::erase_if(values, [&](const Json& value) { return Passes(schema, value); });
  return values;
}

std::vector<std::string> NamedMembers(const std::string& description) {
  std::vector<std::string> names(1);
  int depth = 0;
  for (const char letter : description) {
    if (letter == '{' || letter == '(') ++depth;
    if (letter == '}' || letter == ')') --depth;
    const bool part = (std::islower(static_cast<unsigned char>(letter)) != 0) || letter == '_';
    if (depth == 0 && part)
      names.back() += letter;
    else if (!names.back().empty())
      names.emplace_back();
  }
  std::erase(names, "");
  return names;
}

}  // namespace zorvik::editor_check
