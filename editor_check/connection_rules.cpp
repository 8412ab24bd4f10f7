#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "authoring/protocols.h"
#include "core/local_pipe/lines.h"
#include "core/platform/error_codes.h"
#include "core/platform/pipes.h"
#include "core/process.h"
#include "editor_check/connection.h"
#include "editor_check/rules.h"

namespace zorvik::editor_check {

using core::Json;

namespace {

constexpr std::size_t kLongLine = 1'048'576;
// Such pieces cut characters of three bytes too. A long token makes them larger.
constexpr std::size_t kPiece = 5;
constexpr std::size_t kMostPieces = 200;
constexpr std::uint32_t kBusyWaitMs = 1'000;

Verdict HelloAccepted(Subject& subject) {
  return Connection(subject).Open();
}

// A hello that must be refused with that code.
Verdict RefusedHello(Connection& connection, const std::string& token, std::string_view bridge,
                     const std::string& code, Exchange& exchange) {
  if (Verdict fault = connection.Connect()) return fault;
  if (Verdict fault = connection.Hello(token, bridge, exchange)) return fault;
  return exchange.Require(exchange.answer.Has("ok") && !exchange.Ok() && exchange.Code() == code,
                          R"({"id":0,"ok":false,"error":{"code":")" + code + R"(",...}})");
}

Verdict HelloWrongToken(Subject& subject) {
  Connection connection(subject);
  Exchange exchange;
  return RefusedHello(connection, "zorvik_editor_check", authoring::kBridgeProtocol, "unauthorized",
                      exchange);
}

Verdict HelloRefusedCloses(Subject& subject) {
  Connection connection(subject);
  Exchange exchange;
  if (Verdict fault = RefusedHello(connection, "zorvik_editor_check", authoring::kBridgeProtocol,
                                   "unauthorized", exchange))
    return fault;
  return exchange.Require(connection.AwaitEnd(), "the end of the connection behind the answer");
}

Verdict HelloWrongVersion(Subject& subject) {
  Connection connection(subject);
  Exchange exchange;
  return RefusedHello(connection, subject.Text("token"), "zorvik-bridge/0", "unsupported_bridge",
                      exchange);
}

Verdict HelloFirst(Subject& subject) {
  Connection connection(subject);
  if (Verdict fault = connection.Connect()) return fault;
  Exchange exchange;
  const std::int64_t id = connection.Begin("world.info", Json::Object());
  // An editor may also cut off who doesn't say hello.
  if (connection.Await(id, exchange) && !connection.AwaitEnd())
    return exchange.Require(false, "`unauthorized`, or the end of the connection");
  return exchange.Require(
      exchange.answer.kind == Json::Kind::Null || exchange.Code() == "unauthorized",
      "`ok` false with the code `unauthorized`");
}

Verdict RequestToken(Subject& subject) {
  Connection connection(subject);
  if (Verdict fault = connection.Open()) return fault;
  Exchange exchange;
  const std::int64_t id = connection.Send(Json::Object({{"op", "world.info"},
                                                        {"args", Json::Object()},
                                                        {"client", "zorvik_editor_check"},
                                                        {"deadline_ms", subject.patience_ms}}),
                                          "zorvik_editor_check");
  if (Verdict fault = connection.Await(id, exchange)) return fault;
  return exchange.Require(!exchange.Ok() && exchange.Code() == "unauthorized",
                          "`ok` false with the code `unauthorized`");
}

Verdict Several(Subject& subject) {
  Connection one(subject, "zorvik_editor_check 1");
  Connection other(subject, "zorvik_editor_check 2");
  if (Verdict fault = one.Open()) return fault;
  if (Verdict fault = other.Open()) return fault;
  // The same ids on both, the answers asked for in turn.
  const std::int64_t first = one.Begin("world.info", Json::Object());
  const std::int64_t second = other.Begin("world.capabilities", Json::Object());
  Exchange info;
  Exchange capabilities;
  if (Verdict fault = other.Await(second, capabilities)) return fault;
  if (Verdict fault = one.Await(first, info)) return fault;
  if (Verdict fault = info.Require(info.Result().Has("world_id"), "the answer of world.info"))
    return fault;
  return capabilities.Require(!capabilities.Result().Has("world_id"),
                              "the answer of world.capabilities");
}

// Writes the bytes in pieces of that size, a moment apart. False: the editor has closed the pipe,
// or doesn't read. The end is closed then, so that the system is done with the bytes.
bool WritePieces(core::platform::PipeEnd& end, std::string_view bytes, std::size_t size,
                 std::chrono::steady_clock::time_point deadline) {
  while (!bytes.empty()) {
    std::size_t count = 0;
    core::platform::Progress progress = core::platform::Progress::Failed;
    if (end.StartWrite(bytes.substr(0, size))) progress = core::platform::Progress::Pending;
    while (progress == core::platform::Progress::Pending &&
           std::chrono::steady_clock::now() < deadline) {
      progress = end.FinishWrite(count);
      core::SleepMilliseconds(1);
    }
    if (progress != core::platform::Progress::Done) {
      end.Close();
      return false;
    }
    bytes.remove_prefix(count);
  }
  return true;
}

// Below the lines of LocalPipeClient, which are always whole.
Verdict LinesCut(Subject& subject) {
  constexpr int kRequests = 6;
  // For the writing and for the reading: the pieces are many, and a busy machine makes each late.
  const auto patience = std::chrono::milliseconds(subject.patience_ms);
  auto deadline = std::chrono::steady_clock::now() + patience;
  const auto request = [&](int id) {
    return core::WriteJson(Json::Object({{"id", id},
                                         {"op", id == 0 ? "hello" : "world.info"},
                                         {"token", subject.Text("token")},
                                         {"bridge", authoring::kBridgeProtocol},
                                         {"args", Json::Object()},
                                         {"client", "\u2192\u2192\u2192\u2192\u2192"},
                                         {"deadline_ms", subject.patience_ms}})) +
           '\n';
  };
  core::platform::PipeEnd end;
  const Finding failure{true,
                        "a hello in small pieces, then " + std::to_string(kRequests - 1) +
                            " requests, cut anywhere and several at once",
                        "", "an answer to each"};
  const auto fail = [&](std::string came) {
    Finding finding = failure;
    finding.came = std::move(came);
    return finding;
  };
  std::uint32_t code = core::platform::kPipeBusy;
  while (code == core::platform::kPipeBusy && std::chrono::steady_clock::now() < deadline) {
    code = core::platform::OpenPipe(subject.Text("pipe"), end);
    if (code == core::platform::kPipeBusy)
      core::platform::WaitForInstance(subject.Text("pipe"), kBusyWaitMs);
  }
  if (code != core::platform::kNoError) return fail("the pipe doesn't open");
  std::string rest = request(2) + request(3) + "\r\n" + request(4) + request(5);
  const std::size_t in_the_middle = rest.size() - request(5).size() / 2;
  const std::string first = request(0) + request(1);
  const std::size_t piece = std::max(kPiece, first.size() / kMostPieces);
  if (!WritePieces(end, first, piece, deadline) ||
      !WritePieces(end, rest.substr(0, in_the_middle), rest.size(), deadline) ||
      !WritePieces(end, rest.substr(in_the_middle), rest.size(), deadline))
    return fail("the end of the connection, or of the editor's reading");
  deadline = std::chrono::steady_clock::now() + patience;
  core::LineBuffer buffer;
  std::set<std::int64_t> answered;
  while (answered.size() < kRequests && std::chrono::steady_clock::now() < deadline) {
    std::size_t available = 0;
    if (!end.Peek(available)) break;
    std::string_view bytes;
    core::Lines lines;
    if (available == 0) {
      core::SleepMilliseconds(1);
      continue;
    }
    if (!end.StartRead(available) ||
        end.FinishRead(bytes, subject.patience_ms) != core::platform::Progress::Done)
      break;
    buffer.Append(bytes);
    if (!core::TakeLines(buffer, lines)) return fail("a line of more than 16 MiB");
    for (const std::string& line : lines) {
      Json answer;
      std::string error;
      if (!core::ParseJson(line, answer, error) || !answer.At("id").IsInteger()) continue;
      if (!answer.At("ok").BoolOr(false)) return fail(Shown(line, subject.Text("token")));
      answered.insert(answer.At("id").IntOr(-1));
    }
  }
  if (answered.size() == kRequests) return std::nullopt;
  return fail("answers to " + std::to_string(answered.size()) + " of them within " +
              std::to_string(subject.patience_ms) + " ms");
}

// A request that is a line of exactly so many bytes.
Verdict LineOf(Subject& subject, std::size_t bytes) {
  Connection connection(subject);
  if (Verdict fault = connection.Open()) return fault;
  Json request = Json::Object({{"id", 1},
                               {"token", subject.Text("token")},
                               {"op", "world.info"},
                               {"args", Json::Object()},
                               {"client", "zorvik_editor_check"},
                               {"deadline_ms", subject.patience_ms},
                               {"padding", ""}});
  const std::size_t around = core::WriteJson(request).size();
  if (around > bytes) return NotTried("the token leaves no room in such a line");
  request.Set("padding", Json::Text(std::string(bytes - around, 'x')));
  Exchange exchange;
  const std::int64_t id = connection.Send(std::move(request), subject.Text("token"));
  if (Verdict fault = connection.Await(id, exchange)) return fault;
  return exchange.Require(exchange.Ok(), "`ok` true");
}

Verdict LinesLong(Subject& subject) {
  return LineOf(subject, kLongLine);
}

Verdict LinesLimit(Subject& subject) {
  return LineOf(subject, core::kLineRestLimit);
}

Verdict LinesGarbage(Subject& subject) {
  Connection connection(subject);
  if (Verdict fault = connection.Open()) return fault;
  for (const char* line :
       {"isto nao e JSON", "{", "[1, 2, 3]", "null", "\"x\"", "{}", R"({"id":"x","op":"hello"})",
        R"({"id":1.5,"op":[]})", R"({"op":{}})", "\xFF\xFE\x01", "  \r"})
    connection.SendLine(line);
  Exchange exchange;
  if (Verdict fault = connection.Ask("world.info", Json::Object(), exchange)) {
    fault->sent = "lines that are no messages, then " + fault->sent;
    return fault;
  }
  return exchange.Require(exchange.Ok(), "`ok` true");
}

constexpr auto kRules = std::to_array<Rule>({
    {"hello.accepted",
     R"(A hello with the record's token and `zorvik-bridge/1` is answered with `{"id":0,"ok":true}`.)",
     "record.pipe_served", HelloAccepted},
    {"hello.wrong_token", "A hello with another token is refused with `unauthorized`.",
     "hello.accepted", HelloWrongToken},
    {"hello.refused_closes", "Behind the answer to a refused hello the connection ends.",
     "hello.wrong_token", HelloRefusedCloses},
    {"hello.wrong_version", "A hello with another `bridge` is refused with `unsupported_bridge`.",
     "hello.accepted", HelloWrongVersion},
    {"hello.first", "A request before the hello is refused with `unauthorized`, or cut off.",
     "hello.accepted", HelloFirst},
    {"request.token", "A request with another token is refused with `unauthorized`.",
     "hello.accepted", RequestToken},
    {"connection.several", "Two clients and more are served at once, each with its own answers.",
     "hello.accepted", Several},
    {"lines.cut", "Lines arrive cut anywhere, also within a character, and several at once.",
     "hello.accepted", LinesCut},
    {"lines.long", "A line of 1 MiB is read.", "hello.accepted", LinesLong},
    {"lines.limit", "A line of 16,777,216 bytes is read, the longest there is.", "lines.long",
     LinesLimit},
    {"lines.garbage", "A line that is no message is dropped, and the next request is answered.",
     "hello.accepted", LinesGarbage},
});

}  // namespace

std::span<const Rule> ConnectionRules() {
  return kRules;
}

}  // namespace zorvik::editor_check
