#pragma once

namespace zorvik::mcp {

// The codes of JSON-RPC errors: for messages that can't be served at all. A tool call that fails is
// a successful response whose result says so.
inline constexpr int kParseError = -32700;
inline constexpr int kInvalidRequest = -32600;
inline constexpr int kMethodNotFound = -32601;
inline constexpr int kInvalidParams = -32602;
inline constexpr int kUnsupportedVersion = -32022;

}  // namespace zorvik::mcp
