// zorvik_faulty_editor --id ID [KIND=OPERATION]...
// Prints "pronto ID" once it can be found, and ends with its standard input.

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "authoring/protocols.h"
#include "core/editor_registry.h"
#include "core/local_pipe/stdio_channel.h"
#include "core/process.h"
#include "tests/faulty_editor/faulty_editor.h"

namespace core = zorvik::core;

namespace {

void Serve(const std::string& id, const std::vector<std::string>& faults) {
  core::EditorRecord record;
  record.editor_id = id;
  record.pid = core::CurrentProcessId();
  record.pipe = "zorvik-faulty-" + core::RandomHex(8);
  record.token = core::RandomHex(16);
  record.bridge = zorvik::authoring::kBridgeProtocol;
  zorvik::tests::FaultyEditor editor(record.pipe, record.token, faults);
  core::WriteEditorRecord(record);
  core::StdioChannel console;
  console.Write("pronto " + id);
  for (bool closed = false; !closed;) {
    editor.Turn();
    core::Lines ignored;
    console.Poll(ignored, closed);
    core::SleepMilliseconds(1);
  }
  core::RemoveEditorRecord(record.pid);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc < 3) throw std::invalid_argument("--id ID [KIND=OPERATION]...");
    Serve(argv[2], {argv + 3, argv + argc});
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "zorvik_faulty_editor: %s\n", failure.what());
    return 1;
  }
  return 0;
}
