#pragma once

#include <stdexcept>
#include <string>

#include "core/json.h"

// The texts of requests and answers as they stand on the wire.
namespace zorvik::tests {

// The document that `text` holds; throws when it holds none.
inline core::Json Parse(const std::string& text) {
  core::Json document;
  std::string error;
  if (!core::ParseJson(text, document, error)) throw std::runtime_error(error + ": " + text);
  return document;
}

// The member of params that makes a request independent of any handshake.
inline const std::string kMeta =
    R"("_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28",)"
    R"("io.modelcontextprotocol/clientCapabilities":{}})";
inline const std::string kServerInfo =
    R"({"name":"zorvik-mcp","title":"ZORVIK - autoria de mundos","version":"0.1.0"})";
// What a result ends with that answers such a request.
inline const std::string kServerMeta =
    R"("resultType":"complete","_meta":{"io.modelcontextprotocol/serverInfo":)" + kServerInfo + "}";
// The same for one that clients may keep.
inline const std::string kLastingMeta = R"("ttlMs":3600000,"cacheScope":"public",)" + kServerMeta;

inline std::string RequestLine(const std::string& id, const std::string& method,
                               const std::string& params = "{}") {
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"method":")" + method + R"(","params":)" + params +
         "}";
}

inline std::string ResultLine(const std::string& id, const std::string& result) {
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":)" + result + "}";
}

inline std::string FailureLine(const std::string& id, int code, const std::string& message,
                               const std::string& data = "") {
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"error":{"code":)" + std::to_string(code) +
         R"(,"message":")" + message + "\"" + data + "}}";
}

// What answers a tool call in the version that has no structured content.
inline std::string OldestAnswer(const std::string& id, const std::string& document, bool failed) {
  return ResultLine(id, R"({"content":[{"type":"text","text":)" +
                            core::WriteJson(core::Json::Text(document)) + R"(}],"isError":)" +
                            (failed ? "true}" : "false}"));
}

// The same for the failed call 1, whose error is told in full.
inline std::string ToolFailure(const std::string& code, const std::string& message,
                               const std::string& hint, const std::string& details = "") {
  return OldestAnswer("1",
                      R"({"ok":false,"error":{"code":")" + code + R"(","message":")" + message +
                          R"(","hint":")" + hint + "\"" + details + "}}",
                      true);
}

}  // namespace zorvik::tests
