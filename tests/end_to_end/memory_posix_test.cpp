// What a client or an editor sends may cost only little memory, or it would end the server.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdint>
#include <string>

#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

class MemoryTest : public testing::Test {
 protected:
  MemoryTest() {
#ifndef ZORVIK_SANITIZED  // Sanitizers reserve terabytes of address space.
    const rlimit most{300'000'000, 300'000'000};
    EXPECT_EQ(prlimit(static_cast<pid_t>(client.process.Id()), RLIMIT_AS, &most, nullptr), 0);
#endif
  }

  const TemporaryHome home;
  McpClient client;
};

TEST_F(MemoryTest, AnEditorsFloodHoldsUpNobodyElse) {
  EditorProcess good("bom");
  for (const char* kind :
       {"flood-objects", "flood-numbers", "flood-garbage", "flood-empty-lines"}) {
    EditorProcess bad("mau", {kind + std::string("=world.info")});
    const std::int64_t id = client.BeginCall("world_info", At("mau"));
    for (int i = 0; i < 2; ++i) EXPECT_EQ(Outcome(client.Call("world_info", At("bom"))), "ok");
    EXPECT_FALSE(client.Unclaimed().contains(id)) << kind;  // The flood goes on.
    EXPECT_EQ(Outcome(client.Answer(id).At("result")), "ok") << kind;
  }
}

TEST_F(MemoryTest, LongAnswersCostLittleMoreThanTheirText) {
  EditorProcess editor("mau", {"images=inspect.capture"});
  client.BeginCall("inspect_capture");
  EXPECT_GT(client.process.ReadLine().value_or("").size(), 50'000'000U);

  std::string batch;
  for (int i = 0; i < 400; ++i) batch += R"(,{"jsonrpc":"2.0","id":7,"method":"tools/list"})";
  client.Line("[" + batch.substr(1) + "]");
  EXPECT_GT(client.process.ReadLine().value_or("").size(), 40'000'000U);
}

}  // namespace
}  // namespace zorvik::tests
