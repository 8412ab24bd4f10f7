#pragma once

#include <string>

#include "core/json.h"

namespace zorvik::authoring {

// Checks `value` against the subset of JSON Schema that Schema writes, up to the first fault. True:
// it fits, and both texts are empty. False: `field` holds the path of the fault (empty for the
// document itself) and `reason` a Portuguese text that tells it.
bool Validate(const core::Json& schema, const core::Json& value, std::string& field,
              std::string& reason);

}  // namespace zorvik::authoring
