#include "tests/faulty_editor/faulty_editor.h"

#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "core/process.h"

namespace zorvik::tests {

using core::Json;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds kLateness(400);
constexpr int kHangMs = 1000;
constexpr int kDeathStatus = 9;
// Longer than a reader takes, by more than it reads at once.
constexpr std::size_t kHugeLine = 18'000'000;
// More than one turn writes, and less than a reader takes.
constexpr std::size_t kUnwritten = 16'000'000;
// So many that their documents would take many times their text.
constexpr std::size_t kImages = 1'000'000;
// Work for the server for a good part of a second: far more than it takes between two looks at the
// other editors.
constexpr std::size_t kFloodOfDocuments = 16'000'000;
constexpr std::size_t kFlood = 64'000'000;
constexpr std::chrono::milliseconds kFloodTime(1000);
constexpr std::size_t kGarbage = 4'000'000;

// The text comes again and again before the answer. For that time nothing keeps the editor from
// filling the pipe.
Fault AnswerBehind(std::size_t size, std::string_view text, std::chrono::milliseconds time) {
  return [=](FaultyEditor& editor, const Json& request) {
    std::string lines;
    lines.reserve(size + text.size());
    while (lines.size() < size) lines += text;
    editor.Send(std::move(lines));
    editor.Send(editor.SoundAnswer(request));
    for (const auto end = Clock::now() + time; Clock::now() < end;) editor.Turn();
  };
}

const std::map<std::string_view, Fault> kFaults = {
    {"die", [](FaultyEditor&, const Json&) { std::_Exit(kDeathStatus); }},
    // All of the answer is there, but for what ends its line.
    {"die-before-line-feed",
     [](FaultyEditor& editor, const Json& request) {
       editor.Send(editor.SoundAnswer(request) + std::string(kUnwritten, ' '));
       editor.Turn();
       std::_Exit(kDeathStatus);
     }},
    {"flood-empty-lines", AnswerBehind(kFlood, "\n", kFloodTime)},
    {"flood-garbage", AnswerBehind(kFlood, "isto nao e JSON\n", kFloodTime)},
    {"flood-numbers", AnswerBehind(kFloodOfDocuments, "1\n", kFloodTime)},
    {"flood-objects", AnswerBehind(kFloodOfDocuments, "{}\n", kFloodTime)},
    // Lines that answer nothing, so many that they fill the pipe again and again.
    {"garbage", AnswerBehind(kGarbage,
                             "isto nao e JSON\n[1, 2, 3]\n{\"ok\": true}\n\n\r\n"
                             "{\"id\": 987654321, \"ok\": true}\n",
                             {})},
    // Neither reads nor writes for a while.
    {"hang",
     [](FaultyEditor& editor, const Json& request) {
       core::SleepMilliseconds(kHangMs);
       editor.Send(editor.SoundAnswer(request));
     }},
    {"huge", [](FaultyEditor& editor, const Json&) { editor.Send(std::string(kHugeLine, 'x')); }},
    {"images",
     [](FaultyEditor& editor, const Json& request) {
       std::string zeros = "0";
       for (std::size_t i = 1; i < kImages; ++i) zeros += ",0";
       editor.Send("{\"id\":" + core::WriteJson(request.At("id")) +
                   R"(,"ok":true,"result":{"images":[)" + zeros + "]}}");
     }},
    {"late", [](FaultyEditor& editor,
                const Json& request) { editor.SendLater(editor.SoundAnswer(request), kLateness); }},
    // The request gets lost on its way out of the editor.
    {"never", [](FaultyEditor& editor, const Json& request) { editor.SoundAnswer(request); }},
    // As an editor to which the token of the record says nothing; for `hello`. It leaves the
    // hanging up to the server.
    {"refuse",
     [](FaultyEditor& editor, const Json& request) {
       Json stranger = request;
       stranger.Set("token", Json::Text("desconhecido"));
       editor.Send(editor.SoundAnswer(stranger));
       editor.Ignore();
     }},
};

}  // namespace

FaultyEditor::FaultyEditor(const std::string& pipe_name, const std::string& token,
                           const std::vector<std::string>& wanted)
    : bridge(world, token) {
  for (const std::string& text : wanted) {
    const std::size_t sign = text.find('=');
    const auto fault = kFaults.find(std::string_view(text).substr(0, sign));
    if (fault == kFaults.end() || sign == std::string::npos)
      throw std::runtime_error("no fault of an operation: " + text);
    faults[text.substr(sign + 1)] = fault->second;
  }
  std::string error;
  if (!pipe.Open(pipe_name, error)) throw std::runtime_error(error);
}

void FaultyEditor::Turn() {
  std::vector<core::LocalPipeServer::Message> messages;
  std::vector<std::int32_t> ended;
  pipe.Poll(messages, ended);
  for (const auto& message : messages) {
    connection = message.connection;
    if (connection != ignored) Handle(message.line);
  }
  while (!later.empty() && later.begin()->first <= Clock::now()) {
    const auto due = later.extract(later.begin()).mapped();
    pipe.Send(due.first, due.second);
  }
}

void FaultyEditor::Handle(const std::string& line) {
  Json request;
  std::string error;
  if (!core::ParseJson(line, request, error)) return;
  const auto found = faults.find(request.At("op").text);
  if (found != faults.end())
    found->second(*this, request);
  else
    Send(SoundAnswer(request));
}

std::string FaultyEditor::SoundAnswer(const Json& request) {
  return core::WriteJson(bridge.Handle({connection, core::WriteJson(request)}).message);
}

void FaultyEditor::SendLater(std::string line, std::chrono::milliseconds delay) {
  later.emplace(Clock::now() + delay, std::pair(connection, std::move(line)));
}

}  // namespace zorvik::tests
