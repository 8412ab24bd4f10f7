#pragma once

#include <string_view>

#include "core/json.h"
#include "examples/sample_editor/transactions.h"

namespace zorvik::sample_editor {

// Changes the draft as `args` ask and fills `result`, or fills `error`; the draft is of no more use
// then. Sets the draft's label unless the call brought one.
using ObjectChange = bool (*)(Draft& draft, const core::Json& args, core::Json& result,
                              core::Json& error);

// The change behind an operation objects.*, or null.
ObjectChange FindObjectChange(std::string_view operation);

}  // namespace zorvik::sample_editor
