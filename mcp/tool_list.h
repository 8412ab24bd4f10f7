#pragma once

#include "core/json.h"
#include "mcp/answers.h"

namespace zorvik::mcp {

// The result of `tools/list`: the whole catalog, in the form that the era has for its rows.
core::Json ToolList(const Era& era);

}  // namespace zorvik::mcp
