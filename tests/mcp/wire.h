#pragma once

#include <gtest/gtest.h>

#include <string>

#include "core/json.h"

// The texts of requests and answers as they stand on the wire.
namespace zorvik::mcp {

// The member of params that makes a request independent of any handshake.
inline const std::string kMeta =
    R"("_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28",)"
    R"("io.modelcontextprotocol/clientCapabilities":{}})";
// What a result ends with that answers such a request.
inline const std::string kServerMeta =
    R"("resultType":"complete","_meta":{"io.modelcontextprotocol/serverInfo":{"name":"zorvik-mcp",)"
    R"("title":"ZORVIK - autoria de mundos","version":"0.1.0"}})";

inline std::string Request(const std::string& id, const std::string& method,
                           const std::string& params = "{}") {
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"method":")" + method + R"(","params":)" + params +
         "}";
}

inline std::string Result(const std::string& id, const std::string& result) {
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":)" + result + "}";
}

inline std::string Failure(const std::string& id, int code, const std::string& message,
                           const std::string& data = "") {
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"error":{"code":)" + std::to_string(code) +
         R"(,"message":")" + message + "\"" + data + "}}";
}

// The result of a tool call in the version that has no structured content.
inline std::string OldestResult(const std::string& id, const std::string& document, bool failed) {
  return Result(id, R"({"content":[{"type":"text","text":)" +
                        core::WriteJson(core::Json::Text(document)) + R"(}],"isError":)" +
                        (failed ? "true}" : "false}"));
}

// The same of a call that fails, whose error is told in full.
inline std::string ToolFailure(const std::string& code, const std::string& message,
                               const std::string& hint, const std::string& details = "") {
  return OldestResult("1",
                      R"({"ok":false,"error":{"code":")" + code + R"(","message":")" + message +
                          R"(","hint":")" + hint + "\"" + details + "}}",
                      true);
}

inline core::Json Parse(const std::string& text) {
  core::Json value;
  std::string error;
  EXPECT_TRUE(core::ParseJson(text, value, error)) << error << ": " << text;
  return value;
}

}  // namespace zorvik::mcp
