#include "tests/support/editor_process.h"

#include <gtest/gtest.h>

#include "core/editor_registry.h"

namespace zorvik::tests {
namespace {

ProgramStart EditorStart(const std::string& id, const std::vector<std::string>& misbehaviours) {
  ProgramStart start;
  start.program = "zorvik_sample_editor";
  start.arguments = {"--id", id};
  for (const std::string& kind : misbehaviours)
    start.arguments.insert(start.arguments.end(), {"--misbehave", kind});
  return start;
}

}  // namespace

EditorProcess::EditorProcess(const std::string& id, const std::vector<std::string>& misbehaviours)
    : process(EditorStart(id, misbehaviours)),
      record_path(core::McpHome() / "editors" / (std::to_string(process.Id()) + ".json")) {
  EXPECT_EQ(process.ReadLine(), "pronto " + id);
}

EditorProcess::~EditorProcess() {
  if (!expect_success) return;
  process.CloseInput();
  EXPECT_NO_THROW(EXPECT_EQ(process.Wait(), 0));
  EXPECT_FALSE(std::filesystem::exists(RecordPath()));
}

std::string EditorProcess::Person(const std::string& line) {
  process.Write(line + "\n");
  return process.ReadLine().value_or("the editor has ended");
}

int EditorProcess::Die() {
  expect_success = false;
  return process.Wait();
}

void EditorProcess::Kill() {
  expect_success = false;
  process.Kill();
  process.Wait();
}

}  // namespace zorvik::tests
