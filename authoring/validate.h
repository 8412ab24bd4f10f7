#pragma once

#include <string>

#include "core/json.h"

namespace zorvik::authoring {

// Checks `value` against the subset of JSON Schema that Schema writes, up to the first fault.
// Returns true, with both texts empty, when it fits. Otherwise `field` holds the path of the fault,
// which is empty for the document itself, and `reason` tells it in Portuguese.
bool Validate(const core::Json& schema, const core::Json& value, std::string& field,
              std::string& reason);

}  // namespace zorvik::authoring
