#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "core/json.h"

namespace zorvik::authoring {

// A fluent builder for the JSON Schema documents of the catalog. Keys stand in the order of the
// calls, which is the order on the wire. It checks nothing: its input is the program's own catalog.
class Schema {
 public:
  // A node of that type. An empty description writes no `description` key.
  static Schema Typed(std::string_view type, std::string_view description);
  static Schema Object(std::string_view description);
  static Schema Number(std::string_view description);
  static Schema Integer(std::string_view description);
  static Schema String(std::string_view description);
  static Schema Boolean(std::string_view description);
  static Schema Array(Schema items, std::string_view description);

  Schema& Min(double limit);
  Schema& Max(double limit);
  Schema& MinItems(int limit);
  Schema& MaxItems(int limit);
  Schema& MinLength(int limit);
  Schema& MaxLength(int limit);
  Schema& Enum(std::initializer_list<const char*> words);
  // Whether the object takes fields that it doesn't declare.
  Schema& Closed();
  Schema& Open();
  // Declares a field, or replaces the schema of one that is declared already. Each call with
  // `required` set appends the name to the schema's `required`.
  Schema& Field(std::string_view name, Schema schema, bool required);

  const core::Json& Document() const { return document; }

 private:
  core::Json document;
};

}  // namespace zorvik::authoring
