#include "core/editor_registry.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/process.h"
#include "tests/support/temporary_home.h"

namespace zorvik::core {
namespace {

using tests::WriteText;

constexpr const char* kDeadPid = "2147483647";

class EditorRegistryTest : public testing::Test {
 protected:
  std::filesystem::path File(const std::string& name) const { return home.Editors() / name; }
  static std::vector<std::string> ListedIds() {
    std::vector<std::string> ids;
    for (const EditorRecord& record : ListEditorRecords()) ids.push_back(record.editor_id);
    return ids;
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
  const std::filesystem::path fallback = place("", "");
  EXPECT_TRUE(fallback.is_absolute());
  EXPECT_EQ(fallback.parent_path().parent_path() / tail, fallback);
  EXPECT_EQ(place("casa-\xC3\xA7", ""), std::filesystem::path(u8"casa-ç"));
  EXPECT_FALSE(place("\xFF\xFE", "").empty());
}

TEST_F(EditorRegistryTest, ARecordComesBackAsItWasWritten) {
  const EditorRecord record = {"ed\"1",   "cano",  "segredo",         "zorvik-bridge/1",
                               "9.1",     "proj",  "Projeto",         "mundo",
                               "mundo-7", "ontem", CurrentProcessId()};
  ASSERT_EQ(WriteEditorRecord(record).status, WriteStatus::Ok);
  EXPECT_EQ(tests::ReadText(File(own_pid + ".json")),
            "{\"editor_id\":\"ed\\\"1\",\"pid\":" + own_pid +
                ",\"pipe\":\"cano\",\"token\":\"segredo\",\"bridge\":\"zorvik-bridge/1\","
                "\"engine_version\":\"9.1\",\"project\":\"proj\",\"project_name\":\"Projeto\","
                "\"world\":\"mundo\",\"world_id\":\"mundo-7\",\"started\":\"ontem\"}\n");
  const std::vector<EditorRecord> listed = ListEditorRecords();
  ASSERT_EQ(listed.size(), 1U);
  const EditorRecord& back = listed[0];
  const auto texts = [](const EditorRecord& r) {
    return std::vector<std::string>{r.editor_id,      r.pipe,    r.token,        r.bridge,
                                    r.engine_version, r.project, r.project_name, r.world,
                                    r.world_id,       r.started};
  };
  EXPECT_EQ(texts(back), texts(record));
  EXPECT_EQ(back.pid, record.pid);
  RemoveEditorRecord(record.pid);
  RemoveEditorRecord(record.pid);
  EXPECT_TRUE(std::filesystem::is_empty(home.Editors()));
}

TEST_F(EditorRegistryTest, ListsWhatLeadsToALiveEditorAndDeletesOnlyTheDead) {
  EXPECT_TRUE(ListEditorRecords().empty());
  EXPECT_FALSE(std::filesystem::exists(home.Editors()));

  // The file's name plays no part but for the order among equal pids; nor do further keys.
  for (const std::string& name : std::vector<std::string>{"d", "9", "b", "10", "a", "c"}) {
    WriteText(File(name + ".json"),
              R"({"x":[1],"pipe":"p","editor_id":")" + name + R"(","pid":)" + own_pid + ".9}");
  }
  WriteText(File("sem-id.json"), R"({"pid":)" + own_pid + R"(,"pipe":"p","token":5})");
  const std::string live = R"({"editor_id":"z","pipe":"p","pid":)" + own_pid + "}";
  const std::pair<const char*, std::string> kKept[] = {
      {"notes.txt", live},
      {"1234.JSON", live},
      {"1.json.tmp", live},
      {"vazio.json", ""},
      {"lista.json", "[" + live + "]"},
      {"cortado.json", live.substr(0, live.size() - 1)},
      {"texto.json", R"({"pipe":"p","pid":")" + own_pid + "\"}"},
      {"zero.json", R"({"pipe":"p","pid":4294967296})"},
      {"sem-cano.json", std::string(R"({"pid":)") + kDeadPid + "}"},
  };
  for (const auto& [name, text] : kKept) WriteText(File(name), text);
  std::filesystem::create_directories(File("pasta.json") / "dentro");
  WriteText(File("morto.json"), std::string(R"({"pipe":"p","pid":)") + kDeadPid + "}");

  EXPECT_EQ(ListedIds(), (std::vector<std::string>{"10", "9", "a", "b", "c", "d", ""}));
  for (const auto& [name, text] : kKept) EXPECT_TRUE(std::filesystem::exists(File(name))) << name;
  EXPECT_TRUE(std::filesystem::exists(File("pasta.json") / "dentro"));
  EXPECT_FALSE(std::filesystem::exists(File("morto.json")));
}

}  // namespace
}  // namespace zorvik::core
