#include "mcp/pipe_gateway.h"

#include <gtest/gtest.h>

#include "core/local_pipe/server.h"
#include "core/process.h"

namespace zorvik::mcp {
namespace {

using core::Json;
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
  // Everything received so far, without the connection numbers.
  Lines Received() {
    Poll();
    Lines lines;
    for (const auto& message : received) lines.push_back(message.line);
    return lines;
  }
  void Answer(const std::string& line) {
    pipe.Send(received.back().connection, line);
    Poll();
  }
  // Reads finish only when the system gets round to them, so one poll may not be enough.
  void Poll() {
    for (int i = 0; i < 20; ++i) {
      pipe.Poll(received, closed);
      core::SleepMilliseconds(1);
    }
  }
};

const std::string kHello = R"({"id":0,"op":"hello","token":"t","bridge":"zorvik-bridge/1"})";

Json Request(int id) {
  Json request = Json::Object();
  request.Set("id", Json::Int(id));
  return request;
}

class PipeGatewayTest : public testing::Test {
 protected:
  bool Send(const Editor& editor, int id) {
    return gateway.Send(editor.record, Request(id), error);
  }
  // What one poll brings: replies as editor + text, then the lost editors.
  Lines Poll() {
    std::vector<mcp::EditorGateway::Reply> replies;
    Lines lost;
    gateway.Poll(replies, lost);
    Lines all;
    for (const auto& reply : replies) all.push_back(reply.editor + core::WriteJson(reply.message));
    for (const std::string& editor : lost) all.push_back("lost " + editor);
    return all;
  }

  mcp::PipeGateway gateway;
  std::string error;
};

TEST_F(PipeGatewayTest, SaysHelloOnceForEachConnection) {
  Editor editor("e");
  ASSERT_TRUE(Send(editor, 1)) << error;
  editor.record.token = "new";  // Costs no connection.
  ASSERT_TRUE(Send(editor, 2)) << error;
  EXPECT_EQ(editor.Received(), (Lines{kHello, R"({"id":1})", R"({"id":2})"}));

  editor.Answer(R"({"id":0,"ok":true})");
  EXPECT_EQ(Poll(), Lines{});

  Editor moved("e");
  ASSERT_TRUE(Send(moved, 3)) << error;
  EXPECT_EQ(moved.Received(), (Lines{kHello, R"({"id":3})"}));
  EXPECT_EQ(Poll(), Lines{});  // The connection that was left behind isn't reported.
  editor.Poll();
  EXPECT_EQ(editor.closed.size(), 1u);
}

TEST_F(PipeGatewayTest, DeliversEveryJsonLineInTheOrderOfTheEditors) {
  Editor b("b");
  Editor a("a");
  ASSERT_TRUE(Send(b, 1) && Send(a, 2)) << error;
  b.Received();
  a.Received();
  b.Answer("{\"id\":1}\r");
  for (const char* line : {"no json", "[0]", R"({"x":1})", R"({"id":2,"ok":true})"}) a.Answer(line);
  EXPECT_EQ(Poll(), (Lines{"a[0]", R"(a{"x":1})", R"(a{"id":2,"ok":true})", R"(b{"id":1})"}));
}

TEST_F(PipeGatewayTest, ARefusedHelloClosesAfterItsBatch) {
  for (const char* refusal : {R"({"id":0,"ok":false})", R"({"id":0})", R"({"id":0.5,"ok":1})"}) {
    Editor editor("e");
    ASSERT_TRUE(Send(editor, 1)) << error;
    editor.Received();
    editor.Answer(refusal);
    editor.Answer(R"({"id":1,"ok":true})");
    EXPECT_EQ(Poll(), (Lines{R"(e{"id":1,"ok":true})", "lost e"})) << refusal;
    EXPECT_EQ(Poll(), Lines{});
    ASSERT_TRUE(Send(editor, 2)) << error;
    editor.Poll();
    EXPECT_EQ(editor.Received().size(), 4u);  // Each connection began with a hello.
  }
}

TEST_F(PipeGatewayTest, ReportsALostEditorOnceAndConnectsAgain) {
  Editor editor("e");
  ASSERT_TRUE(Send(editor, 1)) << error;
  editor.Received();
  editor.pipe.Close();
  EXPECT_EQ(Poll(), Lines{"lost e"});
  EXPECT_EQ(Poll(), Lines{});
  EXPECT_FALSE(Send(editor, 2));
  EXPECT_EQ(error, "nenhum editor escuta em " + editor.record.pipe);
  ASSERT_TRUE(editor.pipe.Open(editor.record.pipe, error)) << error;
  ASSERT_TRUE(Send(editor, 3)) << error;
  EXPECT_EQ(editor.Received(), (Lines{kHello, R"({"id":1})", kHello, R"({"id":3})"}));
}

}  // namespace
}  // namespace zorvik::mcp
