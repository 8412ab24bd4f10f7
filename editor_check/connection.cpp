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
constexpr std::size_t kKeptBytes = 268'435'456;

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
  return Finding{true, "a connection to the pipe " + Shown(pipe, token), Shown(error, token),
                 "the editor lets it in"};
}

Verdict Connection::Open() {
  if (Verdict fault = Connect()) return fault;
  Exchange exchange;
  if (Verdict fault = Hello(token, authoring::kBridgeProtocol, exchange)) return fault;
  return exchange.Require(exchange.answer.At("id").IsInteger() && exchange.Ok(),
                          R"({"id":0,"ok":true})");
}

Verdict Connection::Hello(const std::string& secret, std::string_view bridge, Exchange& exchange) {
  std::string line = core::WriteJson(
      Json::Object({{"id", 0}, {"op", "hello"}, {"token", secret}, {"bridge", bridge}}));
  requests[0].sent = Shown(line, token);
  SendLine(std::move(line));
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
  requests[id].sent = Shown(line, token);
  SendLine(std::move(line));
  return id;
}

void Connection::SendLine(std::string line) {
  std::string error;
  // Fails for a connection that has ended, whose reason is known already.
  if (!client.Send(std::move(line), error) && end.empty()) end = error;
}

Verdict Connection::Await(std::int64_t id, Exchange& exchange) {
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(patience_ms);
  const Request& request = requests[id];
  exchange = {request.sent, {}, {}};
  bool open = true;
  while (request.answers == 0 && open && Clock::now() < deadline) open = Turn();
  if (request.answers == 0) {
    exchange.came = open ? "nothing within " + std::to_string(patience_ms) + " ms"
                         : "the end of the connection (" + end + ")";
    return exchange.Require(false, "an answer with the id " + std::to_string(id));
  }
  exchange.came = Shown(request.answer, token);
  std::string ignored;
  core::ParseJson(request.answer, exchange.answer, ignored);
  return std::nullopt;
}

std::size_t Connection::CountAnswers(std::int64_t id) const {
  const auto found = requests.find(id);
  return found == requests.end() ? 0 : found->second.answers;
}

std::string Connection::AnswerLine(std::int64_t id) const {
  const auto found = requests.find(id);
  return found == requests.end() ? "" : found->second.answer;
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
  for (std::string& line : lines) Take(std::move(line));
  if (!open && end.empty()) end = error;
  if (open && lines.empty()) core::SleepMilliseconds(1);
  if (kept_bytes <= kKeptBytes) return open;
  // An editor may answer anything, and must not fill the memory by it.
  client.Close();
  end = "the answers take more than " + std::to_string(kKeptBytes) + " bytes";
  return false;
}

void Connection::Take(std::string line) {
  Json message;
  std::string ignored;
  if (!core::ParseJson(line, message, ignored) || !message.At("id").IsInteger()) return;
  const auto found = requests.find(message.At("id").IntOr(0));
  if (found == requests.end() || ++found->second.answers > 1) return;
  kept_bytes += line.size();
  found->second.answer = std::move(line);
}

}  // namespace zorvik::editor_check
