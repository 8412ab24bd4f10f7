#include "examples/sample_editor/errors.h"

#include <utility>

#include "authoring/catalog.h"

namespace zorvik::sample_editor {

using authoring::ErrorBody;
using core::Json;

Json InvalidArgument(const std::string& field, const std::string& reason) {
  return ErrorBody("invalid_argument", "Argumento invalido em " + field + ": " + reason, "",
                   Json::Object({{"field", field}, {"reason", reason}}));
}

Json InvalidItem(const std::string& list, std::size_t index, const std::string& field,
                 const std::string& reason) {
  const std::string item = list + "[" + std::to_string(index) + "]";
  Json error = InvalidArgument(field.empty() ? item : item + "." + field, reason);
  error.Find("details")->Set("index", Json::Int(static_cast<long long>(index)));
  return error;
}

Json ItemError(const std::string& code, const std::string& list, std::size_t index, std::int64_t id,
               const std::string& message, const std::string& hint) {
  return ErrorBody(
      code, message, hint,
      Json::Object(
          {{"field", list + "[" + std::to_string(index) + "]"}, {"index", index}, {"id", id}}));
}

Json Conflict(const std::string& message, Json changed) {
  return ErrorBody("conflict", message,
                   "Leia de novo os elementos listados e repita com a base_revision nova.",
                   Json::Object({{"changed", std::move(changed)}}));
}

}  // namespace zorvik::sample_editor
