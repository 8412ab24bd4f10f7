#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "mcp/server.h"
#include "tests/support/scripted_gateway.h"
#include "tests/support/wire.h"

namespace zorvik::tests {

// A server with a scripted gateway and a clock that stands still until it is moved.
struct ServerSession {
  ScriptedGateway gateway;
  std::vector<std::string> sent;
  std::vector<std::string> log;
  mcp::Server::Clock::time_point time{};
  mcp::Server server{gateway, [this](std::string line) { sent.push_back(std::move(line)); },
                     [this](const std::string& line) { log.push_back(line); },
                     [this] { return time; }};

  // What the server writes in answer to one line; lines are joined by a line feed.
  std::string Ask(const std::string& line) {
    server.Receive(line);
    return TakeSent();
  }
  std::string Poll() {
    server.Poll();
    return TakeSent();
  }
  // Settles a version by handshake and forgets what it wrote.
  void Initialize(const std::string& version) {
    Ask(RequestLine("0", "initialize", R"({"protocolVersion":")" + version + "\"}"));
    log.clear();
  }

 private:
  std::string TakeSent() {
    std::string joined;
    for (const std::string& line : sent) joined += (joined.empty() ? "" : "\n") + line;
    sent.clear();
    return joined;
  }
};

}  // namespace zorvik::tests
