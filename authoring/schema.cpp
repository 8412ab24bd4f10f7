#include "authoring/schema.h"

#include <utility>

namespace zorvik::authoring {
namespace {

using core::Json;

// The value of a key that is there to be extended, not replaced; set to `initial` if it is missing.
Json& Member(Json& document, std::string_view key, Json initial) {
  Json* found = document.Find(key);
  return found != nullptr ? *found : document.Set(key, std::move(initial));
}

}  // namespace

Schema Schema::Typed(std::string_view type, std::string_view description) {
  Schema schema;
  schema.document.Set("type", Json::Text(std::string(type)));
  if (!description.empty())
    schema.document.Set("description", Json::Text(std::string(description)));
  return schema;
}

Schema Schema::Object(std::string_view description) {
  Schema schema = Typed("object", description);
  schema.document.Set("properties", Json::Object());
  return schema;
}

Schema Schema::Number(std::string_view description) {
  return Typed("number", description);
}

Schema Schema::Integer(std::string_view description) {
  return Typed("integer", description);
}

Schema Schema::String(std::string_view description) {
  return Typed("string", description);
}

Schema Schema::Boolean(std::string_view description) {
  return Typed("boolean", description);
}

Schema Schema::Array(Schema items, std::string_view description) {
  Schema schema = Typed("array", description);
  schema.document.Set("items", std::move(items.document));
  return schema;
}

Schema& Schema::Min(double limit) {
  document.Set("minimum", Json::Number(limit));
  return *this;
}

Schema& Schema::Max(double limit) {
  document.Set("maximum", Json::Number(limit));
  return *this;
}

Schema& Schema::MinItems(int limit) {
  document.Set("minItems", Json::Int(limit));
  return *this;
}

Schema& Schema::MaxItems(int limit) {
  document.Set("maxItems", Json::Int(limit));
  return *this;
}

Schema& Schema::MinLength(int limit) {
  document.Set("minLength", Json::Int(limit));
  return *this;
}

Schema& Schema::MaxLength(int limit) {
  document.Set("maxLength", Json::Int(limit));
  return *this;
}

Schema& Schema::Enum(std::initializer_list<const char*> words) {
  Json list = Json::Array();
  for (const char* word : words) list.Add(Json::Text(word));
  document.Set("enum", std::move(list));
  return *this;
}

Schema& Schema::Closed() {
  document.Set("additionalProperties", Json::Bool(false));
  return *this;
}

Schema& Schema::Open() {
  document.Set("additionalProperties", Json::Bool(true));
  return *this;
}

Schema& Schema::Field(std::string_view name, Schema schema, bool required) {
  Member(document, "properties", Json::Object()).Set(name, std::move(schema.document));
  if (required) Member(document, "required", Json::Array()).Add(Json::Text(std::string(name)));
  return *this;
}

}  // namespace zorvik::authoring
