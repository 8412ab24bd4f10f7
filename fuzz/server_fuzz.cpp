#include <array>
#include <chrono>
#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/other_json.h"
#include "fuzz/require.h"
#include "tests/support/server_session.h"

// An input is a script with a step on each line. The first byte tells the step:
//   + - !  an editor opens, closes, is reported lost: the one that the next byte stands for
//   <      an editor sends the rest of the line
//   g      the client sends a batch of messages that the rest stands for
//   #      editors refuse all messages from now on, or take them again
//   @      time passes; the next byte tells how much
//   .      the server polls
// All other lines go to the server as they stand. What has to hold is said by Exchange and Poll.
namespace zorvik::fuzz {
namespace {

using core::Json;

// The entry of the list that the next byte stands for; the first one when there is none.
template <typename List>
const auto& Take(std::string_view& bytes, const List& list) {
  const std::size_t byte = bytes.empty() ? 0 : static_cast<unsigned char>(bytes.front());
  bytes.remove_prefix(bytes.empty() ? 0 : 1);
  return list[byte % list.size()];
}

// A message of those that matter most.
std::string TakeMessage(std::string_view& bytes) {
  static const std::array<std::string, 6> kIds = {R"("id":1,)",    R"("id":2,)",    R"("id":"1",)",
                                                  R"("id":"\n",)", R"("id":null,)", ""};
  static const std::array<std::string, 6> kMethods = {
      "tools/call", "notifications/cancelled", "initialize", "ping", "server/discover", "x"};
  // Each method finds its own parameters in each of these.
  static const std::array<std::string, 4> kParams = {
      R"({"name":"world_info","arguments":{"editor_id":"e0"},"requestId":1})",
      R"({"name":"objects_query","arguments":{"editor_id":"e1"},"requestId":2,)" + tests::kMeta +
          "}",
      R"({"name":"objects_query","arguments":{"limit":-1},"protocolVersion":"2025-03-26"})",
      R"({"name":"world_info","requestId":"1",)" + tests::kMeta + "}"};
  std::string message = R"({"jsonrpc":"2.0",)" + Take(bytes, kIds);
  message += R"("method":")" + Take(bytes, kMethods);
  return message + R"(","params":)" + Take(bytes, kParams) + "}";
}

Json Parsed(const std::string& text) {
  Json document;
  std::string error;
  Require(core::ParseJson(text, document, error), "own text refused", text);
  Require(OtherJson::accept(text) || !IsUtf8(text), "not JSON", text);
  return document;
}

// Whether the answer to the request of that id, which must be whole, is a result.
bool IsResult(const std::string& line, const std::string& id, bool stateless) {
  const Json answer = Parsed(line);
  const Json& result = answer.At("result");
  const Json& error = answer.At("error");
  RequireEqual(id, core::WriteJson(answer.At("id")), "id");
  Require(line.find('\n') == std::string::npos, "more than one line", line);
  Require(answer.fields.size() == 3 && answer.At("jsonrpc").TextOr("") == "2.0", "shape", line);
  if (answer.Has("error")) {
    Require(error.At("code").IsInteger() && !error.At("message").TextOr("").empty(), "error", line);
    return false;
  }
  Require(result.kind == Json::Kind::Object, "neither a result nor an error", line);
  Require(result.Has("resultType") == stateless, "form of another version", line);
  if (result.Has("content")) {
    const std::string text = result.At("content")[0].At("text").TextOr("");
    Require(result.At("isError").BoolOr(true) != Parsed(text).At("ok").BoolOr(false), "fate", line);
    if (result.Has("structuredContent"))
      RequireEqual(text, core::WriteJson(result.At("structuredContent")), "text and structure");
  }
  return true;
}

class Run {
 public:
  void Step(const std::string& line) {
    const std::string_view bytes = std::string_view(line).substr(line.empty() ? 0 : 1);
    const char step = line.empty() ? ' ' : line.front();
    if (std::string_view("+-!<#@").find(step) != std::string_view::npos) {
      Prepare(one, step, bytes);
      Prepare(whole, step, bytes);
    } else if (step == '.') {
      Poll();
    } else if (step == 'g') {
      std::string batch;
      for (std::string_view left = bytes; !left.empty();)
        batch += (batch.empty() ? "" : ",") + TakeMessage(left);
      Receive("[" + batch + "]");
    } else {
      Receive(line);
    }
    const auto sent = std::exchange(one.gateway.sent, {});
    Require(sent == std::exchange(whole.gateway.sent, {}), "messages to editors", line);
    for (const auto& [editor, text] : sent) {
      const double number = Parsed(text).At("id").number;
      Require(number > std::exchange(last_number, number), "number used before", text);
    }
    for (const tests::ServerSession* session : {&one, &whole})
      Require(session->server.PendingCount() == calls.size(), "calls in flight", line);
  }

 private:
  // A call that an editor has.
  struct Call {
    std::string id;
    bool stateless = false;
    std::string editor;
    std::chrono::steady_clock::time_point deadline;
  };

  static void Prepare(tests::ServerSession& session, char step, std::string_view bytes) {
    static constexpr std::array<const char*, 3> kEditors = {"e0", "e1", ""};
    static constexpr std::array<std::int64_t, 4> kNanoseconds = {1, 60'000'000'000, 119'999'999'999,
                                                                 120'000'000'000};
    tests::ScriptedGateway& gateway = session.gateway;
    if (step == '<') {
      // What a reply nests is nested two values deeper in the answer, which must be readable too.
      Json nested;
      std::string error;
      if (core::ParseJson("[[" + std::string(bytes) + "]]", nested, error))
        gateway.replies.push_back({"e0", nested[0][0]});
    }
    if (step == '#') gateway.send_failure = gateway.send_failure.empty() ? "falhou" : "";
    if (step == '@') session.time += std::chrono::nanoseconds(Take(bytes, kNanoseconds));
    const std::string id = Take(bytes, kEditors);
    if (step == '!') gateway.lost.push_back(id);
    if (step == '+' || step == '-')
      std::erase_if(gateway.editors, [&](const auto& editor) { return editor.editor_id == id; });
    if (step == '+') gateway.Open(id);
  }

  // A batch is answered as its messages are one by one, in one line.
  void Receive(const std::string& line) {
    Json document;
    std::string error;
    if (!core::ParseJson(line, document, error)) document = {};
    std::string expected;
    for (const Json& message : document.items) {
      const std::string answer = Exchange(core::WriteJson(message), message);
      expected += (expected.empty() || answer.empty() ? "" : ",") + answer;
    }
    if (!expected.empty()) expected = "[" + expected + "]";
    if (document.items.empty()) expected = Exchange(line, document);
    RequireEqual(expected, whole.Ask(line), "answers");
  }

  // A request is answered now, or an editor gets it and it is answered later; nothing else is.
  std::string Exchange(const std::string& line, const Json& message) {
    const std::size_t sent_before = one.gateway.sent.size();
    std::string answer = one.Ask(line);
    const Json& id = message.At("id");
    const Json& method = message.At("method");
    const std::string told = core::WriteJson(id);
    const bool greets = message.At("jsonrpc").TextOr("") == "2.0";
    if (greets && (method.kind != Json::Kind::Text || !message.Has("id"))) {
      RequireEqual("", answer, "answer to no request");
      if (method.TextOr("") != "notifications/cancelled") return answer;
      const std::string cancelled = core::WriteJson(message.At("params").At("requestId"));
      const auto call = std::find_if(calls.begin(), calls.end(), [&](const auto& entry) {
        return entry.second.id == cancelled;
      });
      if (call != calls.end()) calls.erase(call);
      return answer;
    }
    if (!greets || (id.kind != Json::Kind::Text && !id.IsInteger())) {
      Require(!IsResult(answer, "null", false), "result of no request", answer);
      return answer;
    }
    const Json& version =
        message.At("params").At("_meta").At("io.modelcontextprotocol/protocolVersion");
    const bool stateless = version.kind == Json::Kind::Text && method.text != "initialize";
    const std::size_t sent = one.gateway.sent.size() - sent_before;
    Require(sent == (answer.empty() ? 1 : 0), "not answered and forwarded once", line);
    if (sent == 0) {
      settled = settled || method.text == "initialize";
      Require(!IsResult(answer, told, stateless) || stateless || settled, "no version", line);
      return answer;
    }
    const auto& [editor, text] = one.gateway.sent.back();
    Require(method.text == "tools/call", "forwarded", line);
    calls[Parsed(text).At("id").number] = {told, stateless, editor,
                                           one.time + std::chrono::minutes(2)};
    return answer;
  }

  // Calls end by their replies, the loss of their editors and the time, in this order.
  void Poll() {
    std::vector<Call> due;
    const auto end_if = [&](const auto& condition) {
      std::erase_if(calls, [&](const auto& call) {
        if (condition(call)) due.push_back(call.second);
        return condition(call);
      });
    };
    for (const auto& reply : one.gateway.replies)
      end_if([&](const auto& call) {
        return call.first == std::trunc(reply.message.At("id").number);
      });
    for (const std::string& editor : one.gateway.lost)
      end_if([&](const auto& call) { return call.second.editor == editor; });
    end_if([&](const auto& call) { return call.second.deadline <= one.time; });

    one.server.Poll();
    whole.server.Poll();
    Require(one.sent == whole.sent, "answers", "of a poll");
    Require(one.sent.size() == due.size(), "answers of a poll", std::to_string(one.sent.size()));
    for (std::size_t i = 0; i < due.size(); ++i)
      Require(IsResult(one.sent[i], due[i].id, due[i].stateless), "no result", one.sent[i]);
    one.sent.clear();
    whole.sent.clear();
  }

  tests::ServerSession whole;    // Gets the client's lines.
  tests::ServerSession one;      // Gets the messages of each batch one by one.
  std::map<double, Call> calls;  // By the id that the editor was given.
  bool settled = false;          // There was a handshake.
  double last_number = 0;        // Of a message to an editor.
};

}  // namespace
}  // namespace zorvik::fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  std::istringstream script(std::string(reinterpret_cast<const char*>(data), size));
  zorvik::fuzz::Run run;
  for (std::string line; std::getline(script, line);) run.Step(line);
  return 0;
}
