// The judge of editors: it finds nothing wrong with the example editor, and of each faulty one the
// rule that it breaks, and no other.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "core/json.h"
#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

using core::Json;

// Modes of files are POSIX's alone.
#ifdef _WIN32
constexpr bool kModes = false;
#else
constexpr bool kModes = true;
#endif

std::vector<std::string> FirstWords(const std::string& program, const std::string& option) {
  ChildProcess process({.program = program, .arguments = {option}});
  std::vector<std::string> words;
  for (auto line = process.ReadLine(); line; line = process.ReadLine())
    words.push_back(line->substr(0, line->find_first_of(" \r")));
  return words;
}

// The rules by what became of them. The patience is that for a busy machine: what an editor loses
// is waited for all that time.
std::map<std::string, std::set<std::string>> Judge(int expected_status) {
  ChildProcess process(
      {.program = "zorvik_editor_check", .arguments = {"--changes", "--json", "--patience", "20"}});
  Json report;
  std::string error;
  const std::string text = process.ReadToEnd();
  EXPECT_TRUE(core::ParseJson(text, report, error)) << error;
  EXPECT_EQ(process.Wait(), expected_status);
  for (const auto& file : std::filesystem::directory_iterator(core::McpHome() / "editors")) {
    const std::string token = Parse(ReadText(file)).At("token").text;
    EXPECT_TRUE(token.empty() || text.find(token) == std::string::npos);
  }
  std::map<std::string, std::set<std::string>> rules;
  for (const Json& rule : report.At("rules").items) {
    rules[rule.At("status").text].insert(rule.At("id").text);
    rules["came"].insert(rule.At("came").text);
    for (const char* key : {"sent", "came", "expected"})
      EXPECT_NE(rule.At("status").text == "failed", rule.At(key).text.empty()) << key;
  }
  return rules;
}

TEST(EditorCheckTest, TheExampleEditorKeepsEveryRule) {
  const TemporaryHome home;
  EditorProcess editor("bom");
  const auto rules = Judge(0);
  EXPECT_FALSE(rules.contains("failed"));
  EXPECT_EQ(rules.contains("not tried"), !kModes);
}

TEST(EditorCheckTest, TakesTheEditorItIsToldAndReportsToAPerson) {
  const TemporaryHome home;
  const auto report = [&](const std::vector<std::string>& arguments, int status) {
    ChildProcess process({.program = "zorvik_editor_check",
                          .arguments = arguments,
                          .error_file = home.Path() / "progress"});
    std::string text = process.ReadToEnd();
    EXPECT_EQ(process.Wait(), status);
    return text;
  };
  EXPECT_EQ(report({}, 2), "");
  EditorProcess one("um");
  EditorProcess other("dois");
  EXPECT_EQ(report({}, 2), "");
  EXPECT_EQ(report({"--editor", "tres"}, 2), "");
  EXPECT_EQ(report({"--editor"}, 2), "");
  const std::string text = report({"--editor", "dois"}, 0);
  EXPECT_TRUE(text.starts_with("Editor dois, process "));
  EXPECT_NE(text.find("  not tried  change.create"), std::string::npos);
  EXPECT_NE(text.find(" passed, 0 failed, "), std::string::npos);
  EXPECT_EQ(ReadText(home.Path() / "progress").find("record.keys: passed\n"), 0U);
}

TEST(EditorCheckTest, EveryRuleHasAFaultThatBreaksIt) {
  std::set<std::string> broken;
  for (const std::string& fault : FirstWords("zorvik_faulty_editor", "--faults"))
    broken.insert(fault.substr(0, fault.find('/')));
  const std::vector<std::string> rules = FirstWords("zorvik_editor_check", "--list");
  EXPECT_EQ(broken, std::set<std::string>(rules.begin(), rules.end()));
}

// The table of faults stands in tests/faulty_editor/bridge_faults.cpp. Each shard takes its share.
constexpr std::size_t kShards = 6;
class FaultShardTest : public testing::TestWithParam<std::size_t> {};

TEST_P(FaultShardTest, ExactlyTheRightRuleFails) {
  const std::vector<std::string> faults = FirstWords("zorvik_faulty_editor", "--faults");
  ASSERT_GE(faults.size(), 25U);
  for (std::size_t at = GetParam(); at < faults.size(); at += kShards) {
    SCOPED_TRACE(faults[at]);
    const TemporaryHome home;
    EditorProcess editor("mau", {"--fault", faults[at]});
    const std::string rule = faults[at].substr(0, faults[at].find('/'));
    const bool shows = kModes || !rule.starts_with("record.private");
    auto rules = Judge(shows ? 1 : 0);
    EXPECT_EQ(rules["failed"], shows ? std::set<std::string>{rule} : std::set<std::string>{})
        << testing::PrintToString(rules["came"]);
  }
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultShardTest, testing::Range<std::size_t>(0, kShards));

}  // namespace
}  // namespace zorvik::tests
