#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/json.h"

// The `error` objects that several operations answer with.
namespace zorvik::sample_editor {

// An argument that the tool's schema lets pass but this editor can't serve.
core::Json InvalidArgument(const std::string& field, const std::string& reason);
// The same for one item of a list; `field` may be empty when the item as a whole is at fault.
core::Json InvalidItem(const std::string& list, std::size_t index, const std::string& field,
                       const std::string& reason);
// An item that names an object which can't be served as asked.
core::Json ItemError(const std::string& code, const std::string& list, std::size_t index,
                     std::int64_t id, const std::string& message, const std::string& hint);
// `changed`: array of what stands in the way.
core::Json Conflict(const std::string& message, core::Json changed);

}  // namespace zorvik::sample_editor
