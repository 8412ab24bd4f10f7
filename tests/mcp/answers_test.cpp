#include <gtest/gtest.h>

#include "tests/support/server_session.h"

namespace zorvik::mcp {
namespace {

using namespace tests;

// The answer that a client of that version gets for an editor's reply.
std::string Shaped(const std::string& version, const std::string& reply) {
  ServerSession session;
  session.gateway.Open("e");
  session.Initialize(version);
  session.Ask(RequestLine("1", "tools/call", R"({"name":"inspect_capture"})"));
  session.gateway.Answer("e", reply);
  return session.Poll();
}

TEST(AnswersTest, MakesADocumentOfEachReply) {
  const std::pair<std::string, std::string> cases[] = {
      {R"({"id":1,"ok":true,"revision":5,"result":{"a":1}})", R"({"ok":true,"revision":5,"a":1})"},
      {R"({"id":1,"ok":true,"revision":"5","result":[1],"error":{}})", R"({"ok":true})"},
      {R"({"id":1,"ok":true,"revision":5,"result":{"a":1,"ok":false,"revision":6}})",
       R"({"ok":false,"revision":6,"a":1})"},
      {R"({"id":1,"ok":true,"result":{"a":1,"revision":"x"}})",
       R"({"ok":true,"a":1,"revision":"x"})"},
      {R"({"id":1,"ok":true,"result":{"images":"x"}})", R"({"ok":true,"images":"x"})"},
      {R"({"id":1,"ok":false,"revision":5,"error":{"code":"conflict","z":[]}})",
       R"({"ok":false,"error":{"code":"conflict","z":[]}})"},
      {R"({"id":1,"ok":1})", R"({"ok":false,"error":{"code":"internal","message":)"
                             R"("Resposta do editor sem erro nem resultado."}})"},
  };
  for (const auto& [reply, document] : cases) {
    std::string answer = OldestAnswer("1", document, !Parse(document).At("ok").boolean);
    EXPECT_EQ(Shaped("2025-03-26", reply), answer);
    answer.insert(answer.find(R"("isError")"), R"("structuredContent":)" + document + ",");
    EXPECT_EQ(Shaped("2025-06-18", reply), answer);
  }
}

TEST(AnswersTest, MovesImagesIntoBlocks) {
  const std::string reply =
      R"({"id":1,"ok":true,"result":{"images":[{"w":1,"data_base64":"QQ==","mime":"image/x"},)"
      R"({"data_base64":[7],"mime":7},3],"z":0}})";
  const std::string content =
      R"({"content":[{"type":"text","text":"{\"ok\":true,\"images\":[{\"w\":1,\"mime\":)"
      R"(\"image/x\"},{\"mime\":7},{}],\"z\":0}"},{"type":"image","data":"QQ==","mimeType":)"
      R"("image/x"},{"type":"image","data":[7],"mimeType":"image/png"},)"
      R"({"type":"image","data":null,"mimeType":"image/png"}],)";
  EXPECT_EQ(
      Shaped("2025-11-25", reply),
      ResultLine("1", content +
                          R"("structuredContent":{"ok":true,"images":[{"w":1,"mime":"image/x"},)"
                          R"({"mime":7},{}],"z":0},"isError":false})"));
  EXPECT_EQ(Shaped("2025-03-26", reply), ResultLine("1", content + R"("isError":false})"));
}

}  // namespace
}  // namespace zorvik::mcp
