#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "core/json.h"
#include "core/local_pipe/server.h"
#include "examples/sample_editor/bridge.h"
#include "examples/sample_editor/world.h"

namespace zorvik::tests {

struct BridgeFault;

// An editor with one fault that no operation has for itself: in its record, its hello, its lines,
// its answers or its changes. It serves several clients, as a sound one.
class BrokenEditor {
 public:
  // Throws when there is no such fault, or when the pipe doesn't open.
  BrokenEditor(std::string_view fault, const std::string& pipe_name, const std::string& token);

  // What is wrong with the record; to be called when its file is there.
  void SpoilRecord(const std::filesystem::path& file);
  // One turn of the main loop.
  void Turn();

  // What faults are made of.

  // The sound answer to a message of the connection whose turn it is.
  sample_editor::Bridge::Reply SoundReply(const core::Json& message);
  void Send(const core::Json& message) { pipe.Send(connection, core::WriteJson(message)); }
  // The world's.
  std::int64_t Revision() const { return world.revision; }
  const std::string token;

 private:
  void Handle(const core::LocalPipeServer::Message& message);

  const BridgeFault& fault;
  core::LocalPipeServer pipe;
  sample_editor::World world = sample_editor::MakeSampleWorld();
  sample_editor::Bridge bridge;
  std::int32_t connection = 0;
};

// The names of the faults: each is that of the rule of zorvik_editor_check that it breaks, and may
// have an addition behind a slash.
std::vector<std::string_view> BridgeFaultNames();

}  // namespace zorvik::tests
