#include "editor_check/connection.h"

#include <chrono>
#include <utility>

#include "authoring/protocols.h"
#include "core/process.h"

namespace zorvik::editor_check {

using core::Json;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int32_t kConnectMs = 3'000;  // As the server.
constexpr std::size_t kShownBytes = 400;

}  // namespace

Verdict Exchange::Require(bool kept, std::string expected) const {
  if (kept) return std::nullopt;
  return Finding{true, sent, came, std::move(expected)};
}

Connection::Connection(const Subject& subject, std::string label)
    : pipe(subject.Text("pipe")),
      token(subject.Text("token")),
      client_label(std::move(label)),
      patience_ms(subject.patience_ms) {}

Verdict Connection::Connect() {
  std::string error;
  if (client.Connect(pipe, kConnectMs, error)) return std::nullopt;
  return Finding{true, "a connection to the pipe " + pipe, error, "the editor lets it in"};
}

Verdict Connection::Open() {
  if (Verdict fault = Connect()) return fault;
  Exchange exchange;
  if (Verdict fault = Hello(token, authoring::kBridgeProtocol, exchange)) return fault;
  return exchange.Require(exchange.answer.At("id").IsInteger() && exchange.Ok(),
                          R"({"id":0,"ok":true})");
}

Verdict Connection::Hello(const std::string& secret, std::string_view bridge, Exchange& exchange) {
  sent[0] = core::WriteJson(
      Json::Object({{"id", 0}, {"op", "hello"}, {"token", secret}, {"bridge", bridge}}));
  SendLine(sent[0]);
  return Await(0, exchange);
}

Verdict Connection::Ask(std::string_view operation, Json args, Exchange& exchange) {
  return Await(Begin(operation, std::move(args)), exchange);
}

Verdict Connection::Do(std::string_view operation, Json args, Exchange& exchange) {
  if (Verdict fault = Ask(operation, std::move(args), exchange)) return fault;
  if (exchange.Code() == "unsupported")
    return NotTried("the editor doesn't have " + std::string(operation));
  return exchange.Require(exchange.Ok(), "`ok` true");
}

std::int64_t Connection::Begin(std::string_view operation, Json args, std::int64_t deadline_ms) {
  if (deadline_ms == 0) deadline_ms = patience_ms;
  return Send(Json::Object({{"op", operation},
                            {"args", std::move(args)},
                            {"client", client_label},
                            {"deadline_ms", deadline_ms}}),
              token);
}

std::int64_t Connection::Send(Json message, const std::string& secret) {
  const std::int64_t id = next_id++;
  message.Set("id", Json::Int(id));
  message.Set("token", Json::Text(secret));
  std::string line = core::WriteJson(message);
  sent[id] = Shown(line);
  SendLine(std::move(line));
  return id;
}

void Connection::SendLine(std::string line) {
  std::string error;
  // Fails for a connection that has ended, whose reason is known already.
  if (!client.Send(std::move(line), error) && end.empty()) end = error;
}

Verdict Connection::Await(std::int64_t id, Exchange& exchange, bool optional) {
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(patience_ms);
  exchange = {Shown(sent[id]), {}, {}};
  bool open = true;
  while (came[id].empty() && open && Clock::now() < deadline) open = Turn();
  if (came[id].empty()) {
    if (optional) return std::nullopt;
    exchange.came = open ? "nothing within " + std::to_string(patience_ms) + " ms"
                         : "the end of the connection (" + end + ")";
    return exchange.Require(false, "an answer with the id " + std::to_string(id));
  }
  exchange.came = Shown(came[id].front());
  std::string ignored;
  core::ParseJson(came[id].front(), exchange.answer, ignored);
  return std::nullopt;
}

std::size_t Connection::CountAnswers(std::int64_t id) const {
  const auto found = came.find(id);
  return found == came.end() ? 0 : found->second.size();
}

bool Connection::AwaitEnd() {
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(patience_ms);
  while (Clock::now() < deadline)
    if (!Turn()) return true;
  return false;
}

bool Connection::Turn() {
  core::Lines lines;
  std::string error;
  const bool open = client.Receive(lines, error);
  for (std::string& line : lines) {
    Json message;
    std::string ignored;
    if (core::ParseJson(line, message, ignored) && message.At("id").IsInteger())
      came[message.At("id").IntOr(0)].push_back(std::move(line));
  }
  if (!open && end.empty()) end = error;
  if (open && lines.empty()) core::SleepMilliseconds(1);
  return open;
}

std::string Connection::Shown(std::string_view text) const {
  std::string shown(text.substr(0, kShownBytes));
  // A character isn't shown in part.
  while (shown.size() < text.size() && !shown.empty() &&
         (static_cast<unsigned char>(text[shown.size()]) & 0xC0U) == 0x80U)
    shown.pop_back();
  const bool cut = shown.size() < text.size();
  if (const std::size_t at = shown.find(token); !token.empty() && at != std::string::npos)
    shown.replace(at, token.size(), "<token>");
  if (cut) shown += "... (" + std::to_string(text.size()) + " bytes)";
  return shown;
}

}  // namespace zorvik::editor_check
