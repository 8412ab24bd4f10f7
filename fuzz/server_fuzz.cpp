#include <array>
#include <cstddef>
#include <sstream>

#include "fuzz/generate.h"
#include "fuzz/require.h"
#include "fuzz/server_model.h"
#include "tests/support/server_session.h"

// An input is a script with a step on each line. The first byte tells the step:
//   + - !  an editor opens, closes, is reported lost: the one that the next byte stands for
//   <      an editor sends the rest of the line
//   g      the client sends a batch of messages that the rest stands for
//   #      editors refuse all messages from now on, or take them again
//   @      time passes; the next byte tells how much
//   .      the server polls
// All other lines go to the server as they stand.
namespace zorvik::fuzz {
namespace {

constexpr std::array<const char*, 3> kEditors = {"e0", "e1", ""};

// A message of those that matter most, in which $ becomes an id.
std::string AnyMessage(Bytes& bytes) {
  static const std::string kHead = R"({"jsonrpc":"2.0","id":$,"method":)";
  static const std::string kMeta =
      R"("_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28",)"
      R"("io.modelcontextprotocol/clientCapabilities":{}})";
  static const std::string kCall = kHead + R"("tools/call","params":{"name":)";
  static const std::array<std::string, 10> kMessages = {
      kCall + R"("world_info","arguments":{"editor_id":"e0"}}})",
      kCall + R"("objects_query","arguments":{"editor_id":"e1"},)" + kMeta + "}}",
      kCall + R"("world_info",)" + kMeta + "}}",
      kCall + R"("objects_query","arguments":{"limit":-1}}})",
      kCall + R"("editor_list"}})",
      kHead + R"("initialize","params":{"protocolVersion":"2025-03-26"}})",
      kHead + R"("initialize"})",
      kHead + R"("ping"})",
      kHead + R"("server/discover","params":{)" + kMeta + "}}",
      R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":$}})"};
  static const std::array<std::string, 7> kIds = {"1",   "2",   R"("1")", R"("\n")",
                                                  "1.0", "1.5", "null"};
  std::string message = bytes.Pick(kMessages);
  return message.replace(message.find('$'), 1, bytes.Pick(kIds));
}

// An answer in the words of ServerModel.
std::string Told(const Json& answer) {
  const Json& result = answer.At("result");
  const Json& code = answer.At("error").At("code");
  const Json& document = result.At("structuredContent");
  if (document.kind == Json::Kind::Object) {
    RequireEqual(core::WriteJson(document), result.At("content")[0].At("text").TextOr(""), "text");
    Require(result.At("isError").BoolOr(false) != document.At("ok").BoolOr(false), "isError",
            core::WriteJson(answer));
  }
  return core::WriteJson(answer.At("id")) + " " +
         (result.kind == Json::Kind::Object ? "result" : core::WriteJson(code));
}

class Run {
 public:
  void Step(const std::string& line) {
    Bytes bytes(line);
    const std::string step = bytes.Text(1);
    if (step == "+" || step == "-") {
      const std::string id = bytes.Pick(kEditors);
      std::erase_if(gateway.editors, [&](const auto& editor) { return editor.editor_id == id; });
      if (step == "+") gateway.Open(id);
      model.editors = gateway.editors;
    } else if (step == "!") {
      gateway.lost.emplace_back(bytes.Pick(kEditors));
    } else if (step == "<") {
      Json message;
      std::string error;
      if (SlowParse(line.substr(1), message, error)) gateway.replies.push_back({"e0", message});
    } else if (step == "#") {
      model.send_fails = !model.send_fails;
      gateway.send_failure = model.send_fails ? "falhou" : "";
    } else if (step == "@") {
      static constexpr std::array<std::int64_t, 4> kNanoseconds = {
          1, 60'000'000'000, 119'999'999'999, 120'000'000'000};
      model.now += std::chrono::nanoseconds(bytes.Pick(kNanoseconds));
      session.time = model.now;
    } else if (step == ".") {
      model.Poll(gateway.replies, gateway.lost);
      session.server.Poll();
    } else {
      std::string batch = AnyMessage(bytes);
      while (!bytes.Empty()) batch += "," + AnyMessage(bytes);
      const std::string text = step == "g" ? "[" + batch + "]" : line;
      model.Receive(text);
      session.server.Receive(text);
    }
    Compare();
  }

 private:
  void Compare() {
    std::vector<std::string> answers;
    for (const std::string& line : session.sent) {
      Json document;
      std::string error;
      Require(line.find('\n') == std::string::npos, "line feed", line);
      // What an editor nests as deep as it may is nested deeper in the answer.
      Require(SlowParse(line, document, error, 80), "not JSON", line);
      std::string& told = answers.emplace_back();
      if (document.kind != Json::Kind::Array) told = Told(document);
      for (const Json& answer : document.items) told += "[" + Told(answer) + "]";
    }
    std::vector<std::string> forwarded;
    for (const auto& [editor, text] : gateway.sent) {
      Json message;
      std::string error;
      Require(SlowParse(text, message, error), "not for an editor's eyes", text);
      forwarded.push_back(editor + " " + core::WriteJson(message.At("id")) + " " +
                          message.At("token").text + " " + message.At("op").text);
      if (message.Has("target")) forwarded.back() += " " + core::WriteJson(message.At("target"));
    }
    RequireEqual(Joined(model.answers), Joined(answers), "answers");
    RequireEqual(Joined(model.forwarded), Joined(forwarded), "messages to editors");
    RequireEqual(std::to_string(model.CallCount()), std::to_string(session.server.PendingCount()),
                 "calls in flight");
    session.sent.clear();
    gateway.sent.clear();
    model.answers.clear();
    model.forwarded.clear();
  }
  static std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) joined += text + "\n";
    return joined;
  }

  tests::ServerSession session;
  tests::ScriptedGateway& gateway = session.gateway;
  ServerModel model;
};

}  // namespace
}  // namespace zorvik::fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  std::istringstream script(std::string(reinterpret_cast<const char*>(data), size));
  zorvik::fuzz::Run run;
  for (std::string line; std::getline(script, line);) run.Step(line);
  return 0;
}
