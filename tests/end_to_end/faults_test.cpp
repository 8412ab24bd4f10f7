// Editors that break the rules, each beside one that keeps them.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

const std::string kLost = "editor_disconnected";

class FaultsTest : public testing::Test {
 protected:
  // The other editor is served, and nothing came that nobody asked for.
  void ExpectUnharmed() {
    EXPECT_EQ(Outcome(client.Call("world_info", At("bom"))), "ok");
    client.Ask("ping");
    EXPECT_TRUE(client.Unclaimed().empty());
  }

  const TemporaryHome home;
  EditorProcess good{"bom"};
  McpClient client;
};

struct Case {
  std::string fault;
  std::string outcome;     // Of the call that meets the fault; empty: it has no end.
  std::string afterwards;  // Outcome of a harmless call to the same editor.
};

class FaultKindsTest : public FaultsTest, public testing::WithParamInterface<Case> {};

TEST_P(FaultKindsTest, CostsItsOwnCallAtMost) {
  const Case& expected = GetParam();
  SCOPED_TRACE(expected.fault);
  EditorProcess bad("mau", {expected.fault});
  const std::int64_t call = client.BeginCall("world_info", At("mau"));
  client.Ask("ping");
  EXPECT_EQ(Outcome(client.Call("world_info", At("bom"))), "ok");
  const bool ends = !expected.outcome.empty();
  const bool dies = expected.fault.starts_with("die");
  EXPECT_EQ(ends ? Outcome(client.Answer(call).At("result")) : "", expected.outcome);
  EXPECT_TRUE(!dies || bad.Die() == 9);
  EXPECT_EQ(Outcome(client.Call("world_capabilities", At("mau"))), expected.afterwards);
  EXPECT_EQ(std::filesystem::exists(bad.RecordPath()), !dies);
  ExpectUnharmed();
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, FaultKindsTest,
    testing::Values(Case{"refuse=hello", kLost, kLost}, Case{"die=hello", kLost, kLost},
                    Case{"die=world.info", kLost, kLost},
                    Case{"die-before-line-feed=world.info", kLost, kLost},
                    Case{"huge=world.info", kLost, "ok"}, Case{"never=world.info", "", "ok"},
                    Case{"late=world.info", "ok", "ok"}, Case{"garbage=world.info", "ok", "ok"}));

// More than the pipe holds, both ways, so that it waits in the server and then in the editor. No
// more than is written long before the editor wakes up: this client doesn't read while it writes.
TEST_F(FaultsTest, WhatAnEditorDoesntReadHoldsUpNobodyElse) {
  EditorProcess idle("parado", {"hang=hello"});
  std::vector<std::int64_t> calls(50);
  std::string many = "9007199254740991";
  for (int i = 1; i < 200; ++i) many += ",9007199254740991";
  many = R"({"editor_id":"parado","ids":[)" + many + "]}";
  for (std::int64_t& id : calls) id = client.BeginCall("objects_get", many);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(Outcome(client.Call("world_info", At("bom"))), "ok");
  for (const std::int64_t id : calls) {
    const core::Json result = client.Answer(id).At("result");
    EXPECT_EQ(result.At("structuredContent").At("missing").items.size(), 200U);
  }
  ExpectUnharmed();
}

}  // namespace
}  // namespace zorvik::tests
