#pragma once

#include <string>

#include "core/json.h"

// What the server tells a client about itself.
namespace zorvik::mcp {

core::Json ServerInfo();
// The result of `initialize`, for the version that it settled.
core::Json Welcome(std::string version);
// The result of `server/discover`.
core::Json Discover();

}  // namespace zorvik::mcp
