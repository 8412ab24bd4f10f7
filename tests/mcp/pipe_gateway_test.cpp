#include "mcp/pipe_gateway.h"

#include <gtest/gtest.h>

#include "core/local_pipe/server.h"
#include "core/process.h"

namespace zorvik::mcp {
namespace {

using Lines = std::vector<std::string>;

// An editor's end of the pipe on the test's own thread.
struct Editor {
  core::LocalPipeServer pipe;
  core::EditorRecord record;
  std::vector<core::LocalPipeServer::Message> received;
  std::vector<std::int32_t> closed;

  explicit Editor(const std::string& id) {
    record.editor_id = id;
    record.token = "t";
    record.bridge = "something else";
    record.pipe = "zorvik-test-" + core::RandomHex(8);
    std::string error;
    EXPECT_TRUE(pipe.Open(record.pipe, error)) << error;
  }
  // All lines so far. Reads finish only when the system gets round to them, so one poll may not be
  // enough.
  Lines Received() {
    for (int i = 0; i < 20; ++i) {
      pipe.Poll(received, closed);
      core::SleepMilliseconds(1);
    }
    Lines lines;
    for (const auto& message : received) lines.push_back(message.line);
    return lines;
  }
  void Answer(const Lines& lines) {
    Received();
    for (const std::string& line : lines) pipe.Send(received.back().connection, line);
    Received();
  }
};

const std::string kHello = R"({"id":0,"op":"hello","token":"t","bridge":"zorvik-bridge/1"})";

class PipeGatewayTest : public testing::Test {
 protected:
  bool Send(const Editor& editor, int id) {
    core::Json request;
    request.Set("id", core::Json::Int(id));
    return gateway.Send(editor.record, request, error);
  }
  // What one poll brings: replies as editor + text, then the lost editors.
  Lines Poll() {
    Lines lost;
    Lines all;
    gateway.Poll(
        [&](const EditorGateway::Reply& reply) {
          all.push_back(reply.editor + core::WriteJson(reply.message));
        },
        lost);
    for (const std::string& editor : lost) all.push_back("lost " + editor);
    return all;
  }

  PipeGateway gateway;
  std::string error;
};

TEST_F(PipeGatewayTest, SaysHelloOnceForEachConnection) {
  Editor editor("e");
  ASSERT_TRUE(Send(editor, 1)) << error;
  editor.record.token = "new";  // Costs no connection.
  ASSERT_TRUE(Send(editor, 2)) << error;
  EXPECT_EQ(editor.Received(), (Lines{kHello, R"({"id":1})", R"({"id":2})"}));

  editor.Answer({R"({"id":0,"ok":true})"});
  EXPECT_EQ(Poll(), Lines{});

  Editor moved("e");
  ASSERT_TRUE(Send(moved, 3)) << error;
  EXPECT_EQ(moved.Received(), (Lines{kHello, R"({"id":3})"}));
  EXPECT_EQ(Poll(), Lines{});  // The connection that was left behind isn't reported.
  editor.Received();
  EXPECT_EQ(editor.closed.size(), 1u);
}

TEST_F(PipeGatewayTest, DeliversJsonInTheOrderOfTheEditorsAndReportsALossOnce) {
  for (const char* refusal : {R"({"id":0,"ok":false})", R"({"id":0})", R"({"id":0.5,"ok":1})"}) {
    Editor b("b");
    Editor a("a");
    ASSERT_TRUE(Send(b, 1) && Send(a, 2)) << error;
    b.Answer({"{\"id\":1}\r"});
    a.Answer({refusal, "no json", "[0]", R"({"x":1})", R"({"id":2,"ok":true})"});
    EXPECT_EQ(Poll(),
              (Lines{"a[0]", R"(a{"x":1})", R"(a{"id":2,"ok":true})", R"(b{"id":1})", "lost a"}));
    b.pipe.Close();
    EXPECT_EQ(Poll(), Lines{"lost b"}) << refusal;
    EXPECT_EQ(Poll(), Lines{});
    EXPECT_FALSE(Send(b, 3));
    EXPECT_EQ(error, "nenhum editor escuta em " + b.record.pipe);
    ASSERT_TRUE(Send(a, 3)) << error;
    EXPECT_EQ(a.Received(), (Lines{kHello, R"({"id":2})", kHello, R"({"id":3})"}));
  }
}

}  // namespace
}  // namespace zorvik::mcp
