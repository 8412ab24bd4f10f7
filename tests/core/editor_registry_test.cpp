#include "core/editor_registry.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/local_pipe/server.h"
#include "core/process.h"
#include "tests/support/temporary_home.h"

namespace zorvik::core {
namespace {

class EditorRegistryTest : public testing::Test {
 protected:
  std::filesystem::path File(const std::string& name) const {
    return home.Editors() / (name + ".json");
  }

  tests::TemporaryHome home;
  const std::string own_pid = std::to_string(CurrentProcessId());
};

TEST_F(EditorRegistryTest, TheHomeFollowsTheEnvironment) {
  const auto place = [](const char* home_value, const char* local_value) {
    const tests::ScopedEnvironment home_variable("ZORVIK_MCP_HOME", home_value);
    const tests::ScopedEnvironment local_variable("LOCALAPPDATA", local_value);
    return McpHome();
  };
  const std::filesystem::path tail = std::filesystem::path("ZORVIK") / "mcp";
  EXPECT_EQ(place("casa", "local"), "casa");
  EXPECT_EQ(place("", "local"), "local" / tail);
  EXPECT_TRUE(place("", "").is_absolute());
  EXPECT_EQ(place("", "").parent_path().parent_path() / tail, place("", ""));
  EXPECT_EQ(place("casa-\xC3\xA7", ""), std::filesystem::path(u8"casa-ç"));
  EXPECT_FALSE(place("\xFF\xFE", "").empty());
}

TEST_F(EditorRegistryTest, ARecordComesBackAsItWasWritten) {
  const EditorRecord record = {"ed\"1",   "cano",  "segredo",         "zorvik-bridge/1",
                               "9.1",     "proj",  "Projeto",         "mundo",
                               "mundo-7", "ontem", CurrentProcessId()};
  const std::string text =
      "{\"editor_id\":\"ed\\\"1\",\"pid\":" + own_pid +
      ",\"pipe\":\"cano\",\"token\":\"segredo\",\"bridge\":\"zorvik-bridge/1\","
      "\"engine_version\":\"9.1\",\"project\":\"proj\",\"project_name\":\"Projeto\","
      "\"world\":\"mundo\",\"world_id\":\"mundo-7\",\"started\":\"ontem\"}\n";
  ASSERT_EQ(WriteEditorRecord(record).status, WriteStatus::Ok);
  EXPECT_EQ(tests::ReadText(File(own_pid)), text);
  const std::vector<EditorRecord> listed = ListEditorRecords();
  ASSERT_EQ(listed.size(), 1U);
  RemoveEditorRecord(record.pid);
  RemoveEditorRecord(record.pid);
  EXPECT_TRUE(std::filesystem::is_empty(home.Editors()));
  // All that was read is written once more.
  WriteEditorRecord(listed[0]);
  EXPECT_EQ(tests::ReadText(File(own_pid)), text);
}

TEST_F(EditorRegistryTest, ListsWhatLeadsToALiveEditorAndDeletesOnlyTheDead) {
  EXPECT_TRUE(ListEditorRecords().empty());
  EXPECT_FALSE(std::filesystem::exists(home.Editors()));

  // The file's name plays no part but for the order among equal pids; nor do further keys.
  for (const std::string name : {"d", "9", "b", "10", "a", "c"}) {
    tests::WriteText(File(name), R"({"x":[1],"pipe":"p","editor_id":")" + name + R"(","pid":)" +
                                     own_pid + ".9}");
  }
  tests::WriteText(File("sem-id"), R"({"pid":)" + own_pid + R"(,"pipe":"p","token":5})");
  const std::string live = R"({"editor_id":"z","pipe":"p","pid":)" + own_pid + "}";
  const std::string dead = R"({"editor_id":"z","pipe":"p","pid":2147483647})";
  const std::pair<std::filesystem::path, std::string> kept[] = {
      {home.Editors() / "1234.JSON", live},
      {home.Editors() / "1.json.tmp", dead},
      {File("lista"), "[" + live + "]"},
      {File("cortado"), dead.substr(0, dead.size() - 1)},
      {File("texto"), R"({"pipe":"p","pid":")" + own_pid + "\"}"},
      {File("zero"), R"({"pipe":"p","pid":4294967296})"},
      {File("sem-cano"), R"({"pid":2147483647})"},
      {File("pasta") / "dentro", ""}};
  for (const auto& [path, text] : kept) tests::WriteText(path, text);
  tests::WriteText(File("morto"), dead);

  std::vector<std::string> ids;
  for (const EditorRecord& record : ListEditorRecords()) ids.push_back(record.editor_id);
  EXPECT_EQ(ids, (std::vector<std::string>{"10", "9", "a", "b", "c", "d", ""}));
  for (const auto& [path, text] : kept) EXPECT_TRUE(std::filesystem::exists(path)) << path;
  EXPECT_FALSE(std::filesystem::exists(File("morto")));
}

// As in a container that shares the home: its processes have numbers that mean nothing here.
TEST_F(EditorRegistryTest, ARecordWhosePipeIsServedStays) {
  const std::string pipe = "zorvik-teste-" + RandomHex(8);
  tests::WriteText(File("longe"), R"({"pid":2147483647,"pipe":")" + pipe + "\"}");
  LocalPipeServer server;
  std::string error;
  ASSERT_TRUE(server.Open(pipe, error)) << error;
  EXPECT_EQ(ListEditorRecords().size(), 1U);
  EXPECT_TRUE(std::filesystem::exists(File("longe")));
  server.Close();
  EXPECT_TRUE(ListEditorRecords().empty());
  EXPECT_FALSE(std::filesystem::exists(File("longe")));
}

}  // namespace
}  // namespace zorvik::core
