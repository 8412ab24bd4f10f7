#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/child_process.h"

namespace zorvik::tests {

// A running example editor.
class EditorProcess {
 public:
  // Starts it in the McpHome() of this moment and waits until it can be found and served. Each of
  // `misbehaviours` is a KIND or KIND=OPERATION.
  explicit EditorProcess(const std::string& id, const std::vector<std::string>& misbehaviours = {});
  // The editor must then end by itself with status 0, unless Die or Kill came first.
  ~EditorProcess();
  EditorProcess(const EditorProcess&) = delete;
  EditorProcess& operator=(const EditorProcess&) = delete;

  // What the person does at the editor: writes the line and waits for the editor's answer to it.
  std::string Person(const std::string& line);
  // Waits for an end that a misbehaviour brings about, and gives the exit code.
  int Die();
  // Ends it as a crash does, its record left behind.
  void Kill();
  const std::filesystem::path& RecordPath() const { return record_path; }

  ChildProcess process;

 private:
  std::filesystem::path record_path;
  bool expect_success = true;
};

}  // namespace zorvik::tests
