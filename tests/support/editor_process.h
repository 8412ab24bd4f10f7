#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "core/editor_registry.h"
#include "core/local_pipe/server.h"
#include "core/process.h"
#include "tests/support/child_process.h"

namespace zorvik::tests {

// A running editor: the example editor, or the faulty one if it is to have faults.
class EditorProcess {
 public:
  // Starts it in the McpHome() of this moment and waits until it can be found and served. Each of
  // `faults` is KIND=OPERATION; tests/faulty_editor/faulty_editor.cpp has the kinds.
  explicit EditorProcess(const std::string& id, const std::vector<std::string>& faults = {})
      : process(Start(id, faults)),
        record_path(core::McpHome() / "editors" / (std::to_string(process.Id()) + ".json")) {
    EXPECT_EQ(process.ReadLine(), "pronto " + id);
  }
  // The editor must then end by itself with status 0, unless Die or Kill came first.
  ~EditorProcess() {
    if (!expect_success) return;
    process.CloseInput();
    EXPECT_NO_THROW(EXPECT_EQ(process.Wait(), 0));
    EXPECT_FALSE(std::filesystem::exists(record_path));
  }
  EditorProcess(const EditorProcess&) = delete;
  EditorProcess& operator=(const EditorProcess&) = delete;

  // What the person does at the editor: writes the line and waits for the editor's answer to it.
  std::string Person(const std::string& line) {
    process.Write(line + "\n");
    return process.ReadLine().value_or("the editor has ended");
  }
  // Waits for an end that a fault brings about, and gives the exit code.
  int Die() {
    expect_success = false;
    const int status = process.Wait();
    // Opening a pipe sweeps away what the dead one left of its own.
    std::string error;
    EXPECT_TRUE(core::LocalPipeServer().Open("zorvik-test-" + core::RandomHex(8), error)) << error;
    return status;
  }
  // Ends it as a crash does, its record left behind.
  void Kill() {
    process.Kill();
    Die();
  }
  const std::filesystem::path& RecordPath() const { return record_path; }

  ChildProcess process;

 private:
  static ProgramStart Start(const std::string& id, std::vector<std::string> arguments) {
    const char* const program = arguments.empty() ? "zorvik_sample_editor" : "zorvik_faulty_editor";
    arguments.insert(arguments.begin(), {"--id", id});
    return {.program = program, .arguments = std::move(arguments)};
  }

  std::filesystem::path record_path;
  bool expect_success = true;
};

}  // namespace zorvik::tests
