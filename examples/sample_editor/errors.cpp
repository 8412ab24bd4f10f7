#include "examples/sample_editor/errors.h"

#include <utility>

#include "authoring/catalog.h"

namespace zorvik::sample_editor {

using authoring::ErrorBody;
using core::Json;

Json InvalidArgument(const std::string& field, const std::string& reason) {
  Json details = Json::Object();
  details.Set("field", Json::Text(field));
  details.Set("reason", Json::Text(reason));
  return ErrorBody("invalid_argument", "Argumento invalido em " + field + ": " + reason, "",
                   std::move(details));
}

Json InvalidItem(const std::string& list, std::size_t index, const std::string& field,
                 const std::string& reason) {
  const std::string item = list + "[" + std::to_string(index) + "]";
  Json error = InvalidArgument(field.empty() ? item : item + "." + field, reason);
  Json details = error.At("details");
  details.Set("index", Json::Int(static_cast<long long>(index)));
  error.Set("details", std::move(details));
  return error;
}

Json ItemError(const std::string& code, const std::string& list, std::size_t index, std::int64_t id,
               const std::string& message, const std::string& hint) {
  Json details = Json::Object();
  details.Set("field", Json::Text(list + "[" + std::to_string(index) + "]"));
  details.Set("index", Json::Int(static_cast<long long>(index)));
  details.Set("id", Json::Int(id));
  return ErrorBody(code, message, hint, std::move(details));
}

Json Conflict(const std::string& message, Json changed) {
  Json details = Json::Object();
  details.Set("changed", std::move(changed));
  return ErrorBody("conflict", message,
                   "Leia de novo os elementos listados e repita com a base_revision nova.",
                   std::move(details));
}

}  // namespace zorvik::sample_editor
