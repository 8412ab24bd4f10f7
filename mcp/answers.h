#pragma once

#include <string>

#include "core/json.h"

// The way out: everything that the server says to a client takes its form here.
namespace zorvik::mcp {

// The codes of JSON-RPC errors, which answer messages that can't be served at all. A tool call that
// fails gets a successful response, and its result says so.
inline constexpr int kParseError = -32700;
inline constexpr int kInvalidRequest = -32600;
inline constexpr int kMethodNotFound = -32601;
inline constexpr int kInvalidParams = -32602;
inline constexpr int kUnsupportedVersion = -32022;

// The protocol conditions under which one request is served and its answer shaped.
struct Era {
  bool stateless = false;  // The request brought its own version, in `_meta`.
  std::string version;

  // The oldest version has neither structured results nor titles and output schemas in rows.
  bool Oldest() const { return !stateless && version == "2025-03-26"; }
};

// The texts of the two messages that answer a request. Null `data` is left out. Answers are texts
// from the start, since as documents they would take many times the memory.
std::string Response(const core::Json& id, core::Json result);
std::string Failure(const core::Json& id, int code, std::string message, core::Json data = {});

// The result, with what its era adds to all results.
core::Json Result(const Era& era, core::Json result);
// The same for a result that is one for all callers and stays so: the newest version wants to be
// told how long a client may keep it.
core::Json LastingResult(const Era& era, core::Json result);

// A tool document is what a tool has to say: `ok`, then either its own members or `error`.

// The document of a call that failed. An empty hint and null details are left out.
core::Json ToolError(std::string code, std::string message, std::string hint,
                     core::Json details = {});
// The document for an editor's reply. The members of its `result` follow `ok` and `revision`,
// and may replace them.
core::Json ToolDocument(core::Json reply);
// The whole answer of a tool call, from its document. The result holds the document as text, its
// images as content blocks, and, in all but the oldest version, the document itself.
std::string ToolAnswer(const core::Json& id, const Era& era, core::Json document);

}  // namespace zorvik::mcp
