#pragma once

#include <string>
#include <vector>

namespace zorvik::authoring {

inline constexpr const char* kServerName = "zorvik-mcp";
// The version of the project, as CMakeLists.txt has it.
extern const char* const kServerVersion;
// The MCP version that needs no handshake.
inline constexpr const char* kNewestProtocol = "2026-07-28";
inline constexpr const char* kBridgeProtocol = "zorvik-bridge/1";

// The MCP versions that are settled by `initialize`, newest first. The first one is the fallback.
const std::vector<std::string>& LegacyProtocols();

}  // namespace zorvik::authoring
