#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

struct Case {
  std::string kind;
  std::string outcome;     // Of the call that meets the misbehaviour; empty: it has no end.
  std::string afterwards;  // Outcome of a harmless call to the same editor.
  bool dies = false;
};

std::ostream& operator<<(std::ostream& out, const Case& misbehaviour) {
  return out << misbehaviour.kind;
}

class MisbehaviourTest : public testing::TestWithParam<Case> {};

TEST_P(MisbehaviourTest, CostsItsOwnCallAtMost) {
  const Case& expected = GetParam();
  const TemporaryHome home;
  EditorProcess good("bom");
  EditorProcess bad("mau", {expected.kind + "=world.info"});
  McpClient client;
  const std::string at_bad = R"({"editor_id":"mau"})";
  const std::string at_good = R"({"editor_id":"bom"})";

  const std::int64_t call = client.BeginCall("world_info", at_bad);
  client.Ask("ping");
  EXPECT_EQ(Outcome(client.Call("world_info", at_good)), "ok");
  std::int64_t newer = 0;
  if (expected.kind == "reorder") {
    newer = client.BeginCall("world_summary", at_bad);
    EXPECT_EQ(Outcome(client.Answer(newer).At("result")), "ok");
    EXPECT_TRUE(client.Unclaimed().empty());
  }
  const bool ends = !expected.outcome.empty();
  EXPECT_EQ(ends ? Outcome(client.Answer(call).At("result")) : "", expected.outcome);
  EXPECT_EQ(expected.dies ? bad.Die() : 9, 9);
  EXPECT_EQ(Outcome(client.Call("world_capabilities", at_bad)), expected.afterwards);
  EXPECT_EQ(Outcome(client.Call("world_info", at_good)), "ok");
  EXPECT_EQ(std::filesystem::exists(bad.RecordPath()), !expected.dies);
  EXPECT_TRUE(client.Unclaimed().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, MisbehaviourTest,
    testing::Values(Case{"refuse-hello", "editor_disconnected", "editor_disconnected"},
                    Case{"late", "ok", "ok"}, Case{"reorder", "ok", "ok"},
                    Case{"pieces", "ok", "ok"}, Case{"never", "", "ok"},
                    Case{"garbage", "ok", "ok"}, Case{"huge", "editor_disconnected", "ok"},
                    Case{"die", "editor_disconnected", "editor_disconnected", true},
                    Case{"die-mid-answer", "editor_disconnected", "editor_disconnected", true},
                    Case{"foreign-id", "", "ok"}, Case{"flood", "ok", "ok"},
                    Case{"hang", "ok", "ok"}),
    [](const auto& test) {
      std::string name;
      for (const char letter : test.param.kind) name += letter == '-' ? '_' : letter;
      return name;
    });

}  // namespace
}  // namespace zorvik::tests
