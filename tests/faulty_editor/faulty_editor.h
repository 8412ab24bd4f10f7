#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "core/json.h"
#include "examples/sample_editor/bridge.h"
#include "examples/sample_editor/world.h"
#include "tests/faulty_editor/raw_pipe.h"

namespace zorvik::tests {

class FaultyEditor;

// One way to break the rules: what is done with a request in place of sound work.
using Fault = void (*)(FaultyEditor& editor, const core::Json& request);

// The fault of that kind, or null. A new kind is a function and an entry in faults.cpp.
Fault FindFault(std::string_view kind);

// An editor that does what the example editor does, but for the operations that have a fault.
class FaultyEditor {
 public:
  // Each of `wanted` is KIND=OPERATION, where the operation may also be hello or cancel. Throws
  // when there is no such kind, or when the pipe doesn't open.
  FaultyEditor(const std::string& pipe_name, const std::string& token,
               const std::vector<std::string>& wanted);

  // One turn of the main loop.
  void Turn();

  // What faults are made of.

  // Carries the request out and gives the line with the answer, its line feed included.
  std::string SoundAnswer(const core::Json& request);
  void Write(std::string_view bytes) { pipe.Write(bytes); }
  // Other answers go out meanwhile.
  void WriteLater(std::string bytes, std::chrono::milliseconds delay);
  // Takes notice of nothing more from this client.
  void Ignore() { ignored = pipe.Connection(); }

 private:
  using Clock = std::chrono::steady_clock;

  void Handle(const std::string& line);

  RawPipe pipe;
  sample_editor::World world = sample_editor::MakeSampleWorld();
  sample_editor::Bridge bridge;
  std::map<std::string, Fault> faults;  // By operation.
  std::multimap<Clock::time_point, std::string> later;
  std::int32_t ignored = 0;  // A connection.
};

}  // namespace zorvik::tests
