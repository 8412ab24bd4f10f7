#pragma once

#include <optional>
#include <string>

#include "core/json.h"
#include "mcp/answers.h"

// Which protocol version a request is served under.
namespace zorvik::mcp {

// The version that `initialize` settles: the requested one, or the newest of those that need it.
std::string SettledVersion(const std::string& requested);

// The era of a request other than `initialize`, whose last call settled `legacy_version`. Nothing,
// with the ready answer in `failure`, when the request can't be served.
std::optional<Era> EraOf(const core::Json& id, const core::Json& params,
                         const std::optional<std::string>& legacy_version, std::string& failure);

}  // namespace zorvik::mcp
