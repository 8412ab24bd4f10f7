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
    {"die", DieAtOnce},   {"die-before-line-feed", DieBeforeLineFeed},
    {"garbage", Garbage}, {"hang", Hang},
    {"huge", Huge},       {"late", Late},
    {"never", Never},     {"refuse", Refuse},
};

}  // namespace

Fault FindFault(std::string_view kind) {
  const auto found = kFaults.find(kind);
  return found == kFaults.end() ? nullptr : found->second;
}

}  // namespace zorvik::tests
