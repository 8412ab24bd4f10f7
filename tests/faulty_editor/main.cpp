// zorvik_faulty_editor --id ID [KIND=OPERATION]...
// zorvik_faulty_editor --id ID --fault NAME
// zorvik_faulty_editor --faults
// Prints "pronto ID" once it can be found, and ends with its standard input. The last form prints
// the names that --fault takes.

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "authoring/protocols.h"
#include "core/editor_registry.h"
#include "core/local_pipe/stdio_channel.h"
#include "core/process.h"
#include "tests/faulty_editor/bridge_faults.h"
#include "tests/faulty_editor/faulty_editor.h"

namespace core = zorvik::core;
namespace tests = zorvik::tests;

namespace {

template <class Editor>
void Serve(Editor& editor, const core::EditorRecord& record) {
  core::StdioChannel console;
  console.Write("pronto " + record.editor_id);
  for (bool closed = false; !closed;) {
    editor.Turn();
    core::Lines ignored;
    console.Poll(ignored, closed);
    core::SleepMilliseconds(1);
  }
  core::RemoveEditorRecord(record.pid);
}

void Run(const std::vector<std::string>& arguments) {
  if (arguments == std::vector<std::string>{"--faults"}) {
    for (const std::string_view name : tests::BridgeFaultNames())
      std::puts(std::string(name).c_str());
    return;
  }
  if (arguments.size() < 2) throw std::invalid_argument("--id ID [KIND=OPERATION]...");
  core::EditorRecord record;
  record.editor_id = arguments[1];
  record.pid = core::CurrentProcessId();
  record.pipe = "zorvik-faulty-" + core::RandomHex(8);
  record.token = core::RandomHex(16);
  record.bridge = zorvik::authoring::kBridgeProtocol;
  if (arguments.size() == 4 && arguments[2] == "--fault") {
    tests::BrokenEditor editor(arguments[3], record.pipe, record.token);
    core::WriteEditorRecord(record);
    editor.SpoilRecord(core::McpHome() / "editors" / (std::to_string(record.pid) + ".json"));
    return Serve(editor, record);
  }
  tests::FaultyEditor editor(record.pipe, record.token, {arguments.begin() + 2, arguments.end()});
  core::WriteEditorRecord(record);
  Serve(editor, record);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run({argv + 1, argv + argc});
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "zorvik_faulty_editor: %s\n", failure.what());
    return 1;
  }
  return 0;
}
