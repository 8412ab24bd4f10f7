#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/json.h"
#include "core/local_pipe/server.h"
#include "examples/sample_editor/bridge.h"
#include "examples/sample_editor/world.h"

namespace zorvik::tests {

class FaultyEditor;

// One way to break the rules: what is done with a request in place of sound work.
using Fault = std::function<void(FaultyEditor& editor, const core::Json& request)>;

// An editor that does what the example editor does, but for the operations that have a fault.
class FaultyEditor {
 public:
  // Each of `wanted` is KIND=OPERATION, where the operation may also be hello or cancel. Throws
  // when there is no such kind, or when the pipe doesn't open.
  FaultyEditor(const std::string& pipe_name, const std::string& token,
               const std::vector<std::string>& wanted);

  // One turn of the main loop.
  void Turn();

  // What faults are made of. All goes to the client whose request is handled.

  // Carries the request out and gives the text of the answer.
  std::string SoundAnswer(const core::Json& request);
  void Send(std::string line) { pipe.Send(connection, std::move(line)); }
  // Other answers go out meanwhile.
  void SendLater(std::string line, std::chrono::milliseconds delay);
  // Takes notice of nothing more from this client.
  void Ignore() { ignored = connection; }

 private:
  void Handle(const std::string& line);

  core::LocalPipeServer pipe;
  sample_editor::World world = sample_editor::MakeSampleWorld();
  sample_editor::Bridge bridge;
  std::map<std::string, Fault> faults;  // By operation.
  std::multimap<std::chrono::steady_clock::time_point, std::pair<std::int32_t, std::string>> later;
  std::int32_t connection = 0;
  std::int32_t ignored = 0;
};

}  // namespace zorvik::tests
