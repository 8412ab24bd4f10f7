#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <string>

#include "core/process.h"
#include "tests/faulty_editor/faulty_editor.h"

namespace zorvik::tests {

using core::Json;

namespace {

constexpr std::chrono::milliseconds kLateness(400);
constexpr int kHangMs = 1000;
constexpr int kDeathStatus = 9;
// Longer than a reader takes, by more than it reads at once.
constexpr std::size_t kHugeLine = 18'000'000;
// So many that their documents would take many times their text.
constexpr std::size_t kImages = 1'000'000;
constexpr std::size_t kFloodBlock = 1'048'576;
constexpr std::chrono::seconds kFloodTime(1);
constexpr int kGarbageBlocks = 50;
constexpr int kGarbageLinesPerBlock = 1000;

[[noreturn]] void Die() {
  std::_Exit(kDeathStatus);
}

// The request gets lost on its way out of the editor.
void Never(FaultyEditor& editor, const Json& request) {
  editor.SoundAnswer(request);
}

void Late(FaultyEditor& editor, const Json& request) {
  editor.WriteLater(editor.SoundAnswer(request), kLateness);
}

// Lines that answer nothing come first, so many that they fill the pipe again and again.
void Garbage(FaultyEditor& editor, const Json& request) {
  std::string block;
  for (int line = 0; line < kGarbageLinesPerBlock; ++line)
    block +=
        "isto nao e JSON\n[1, 2, 3]\n{\"ok\": true}\n\n\r\n{\"id\": 987654321, \"ok\": true}\n";
  for (int i = 0; i < kGarbageBlocks; ++i) editor.Write(block);
  editor.Write(editor.SoundAnswer(request));
}

// Writes the text again and again, as fast as it is taken, before the answer.
void Flood(FaultyEditor& editor, const Json& request, std::string_view text) {
  std::string block;
  while (block.size() < kFloodBlock) block += text;
  const auto end = std::chrono::steady_clock::now() + kFloodTime;
  while (std::chrono::steady_clock::now() < end) editor.Write(block);
  editor.Write(editor.SoundAnswer(request));
}

void FloodOfObjects(FaultyEditor& editor, const Json& request) {
  Flood(editor, request, "{}\n");
}

void FloodOfNumbers(FaultyEditor& editor, const Json& request) {
  Flood(editor, request, "1\n");
}

void FloodOfGarbage(FaultyEditor& editor, const Json& request) {
  Flood(editor, request, "isto nao e JSON\n");
}

void FloodOfEmptyLines(FaultyEditor& editor, const Json& request) {
  Flood(editor, request, "\n");
}

void Images(FaultyEditor& editor, const Json& request) {
  std::string zeros = "0";
  for (std::size_t i = 1; i < kImages; ++i) zeros += ",0";
  editor.Write("{\"id\":" + core::WriteJson(request.At("id")) +
               R"(,"ok":true,"result":{"images":[)" + zeros + "]}}\n");
}

void Huge(FaultyEditor& editor, const Json& /*request*/) {
  editor.Write(std::string(kHugeLine, 'x') + '\n');
}

// Neither reads nor writes for a while.
void Hang(FaultyEditor& editor, const Json& request) {
  core::SleepMilliseconds(kHangMs);
  editor.Write(editor.SoundAnswer(request));
}

void DieAtOnce(FaultyEditor& /*editor*/, const Json& /*request*/) {
  Die();
}

// All of the answer is there, but for what ends its line.
void DieBeforeLineFeed(FaultyEditor& editor, const Json& request) {
  const std::string line = editor.SoundAnswer(request);
  editor.Write(std::string_view(line).substr(0, line.find('\n')));
  Die();
}

// As an editor to which the token of the record says nothing; for `hello`. It leaves the hanging up
// to the server.
void Refuse(FaultyEditor& editor, const Json& request) {
  Json stranger = request;
  stranger.Set("token", Json::Text("desconhecido"));
  editor.Write(editor.SoundAnswer(stranger));
  editor.Ignore();
}

const std::map<std::string_view, Fault> kFaults = {
    {"die", DieAtOnce},
    {"die-before-line-feed", DieBeforeLineFeed},
    {"flood-empty-lines", FloodOfEmptyLines},
    {"flood-garbage", FloodOfGarbage},
    {"flood-numbers", FloodOfNumbers},
    {"flood-objects", FloodOfObjects},
    {"garbage", Garbage},
    {"hang", Hang},
    {"huge", Huge},
    {"images", Images},
    {"late", Late},
    {"never", Never},
    {"refuse", Refuse},
};

}  // namespace

Fault FindFault(std::string_view kind) {
  const auto found = kFaults.find(kind);
  return found == kFaults.end() ? nullptr : found->second;
}

}  // namespace zorvik::tests
