#pragma once

#include "core/json.h"
#include "examples/sample_editor/transactions.h"

namespace zorvik::sample_editor {

// Tells the client about what the draft puts into another object, or moves within one: sets
// `warnings` of the result, or nothing. What hangs together, as a roof and its house, doesn't
// count, nor do touches and hidden objects.
void WarnOfOverlaps(const Draft& draft, core::Json& result);

}  // namespace zorvik::sample_editor
