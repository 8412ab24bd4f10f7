#include <gtest/gtest.h>

#include <string>

#include "core/json.h"
#include "examples/sample_editor/operations.h"
#include "examples/sample_editor/world.h"

namespace zorvik::sample_editor {
namespace {

using core::Json;

class SampleEditorWorldTest : public testing::Test {
 protected:
  // The result of the call, or its error.
  Json Do(const std::string& operation, const std::string& args,
          const std::string& client = "ana") {
    Json parsed;
    std::string fault;
    EXPECT_TRUE(core::ParseJson(args, parsed, fault)) << fault;
    const Author author = client == "user" ? Author{"user", ""} : Author{"agent", client};
    Json result = Json::Object();
    Json error;
    return RunOperation(world, {operation, parsed, author}, result, error) ? result : error;
  }
  std::string Code(const std::string& operation, const std::string& args,
                   const std::string& client = "ana") {
    return Do(operation, args, client).At("code").TextOr("done");
  }
  double X(std::int64_t id) { return Find(world.objects, id)->fields.At("x").number; }

  World world = MakeSampleWorld();
};

TEST_F(SampleEditorWorldTest, OnlyAForeignChangeToTheSameElementConflicts) {
  ASSERT_EQ(Code("objects.update", R"({"updates":[{"id":4,"x":50}],"base_revision":1})", "user"),
            "done");
  ASSERT_EQ(Code("objects.update", R"({"updates":[{"id":5,"x":51}],"base_revision":1})"), "done");
  // The author's own later change doesn't hide the foreign one before it.
  ASSERT_EQ(Code("objects.update", R"({"updates":[{"id":4,"x":52}],"base_revision":2})"), "done");
  const std::string stale = R"({"updates":[{"id":5,"x":0},{"id":4,"x":0}],"base_revision":1})";
  const Json error = Do("objects.update", stale);
  EXPECT_EQ(error.At("code").text, "conflict");
  ASSERT_EQ(error.At("details").At("changed").items.size(), 1U);
  EXPECT_EQ(error.At("details").At("changed")[0].At("id").number, 4);
  EXPECT_EQ(X(5), 51);
  EXPECT_EQ(world.revision, 4);
}

TEST_F(SampleEditorWorldTest, DeletingAFamilyMindsWhatHappenedToItsChildren) {
  ASSERT_EQ(Code("objects.update", R"({"updates":[{"id":3,"x":1}],"base_revision":1})", "rui"),
            "done");
  EXPECT_EQ(Code("objects.delete", R"({"ids":[1],"base_revision":1})"), "conflict");
  ASSERT_EQ(Code("objects.delete", R"({"ids":[1],"base_revision":2})"), "done");
  EXPECT_EQ(Code("objects.update", R"({"updates":[{"id":3,"x":2}],"base_revision":2})", "rui"),
            "conflict");
  EXPECT_EQ(Code("objects.update", R"({"updates":[{"id":3,"x":2}],"base_revision":3})", "rui"),
            "not_found");
}

TEST_F(SampleEditorWorldTest, UndoAndRedoStopAtThePersonsWork) {
  ASSERT_EQ(Code("objects.update", R"({"updates":[{"id":4,"x":50}],"base_revision":1})"), "done");
  ASSERT_EQ(Code("history.undo", "{}"), "done");
  EXPECT_EQ(X(4), 60);
  ASSERT_EQ(Code("history.redo", "{}"), "done");
  EXPECT_EQ(X(4), 50);
  ASSERT_EQ(Code("history.undo", "{}"), "done");
  ASSERT_EQ(Code("objects.create", R"({"objects":[{"asset":"zorvik_rocha","x":0,"z":0}]})", "user"),
            "done");
  EXPECT_EQ(Code("history.redo", "{}"), "nothing_to_redo");
  EXPECT_EQ(Code("history.undo", "{}"), "conflict");
}

TEST_F(SampleEditorWorldTest, RevertNeedsEveryElementAsItWasLeft) {
  ASSERT_EQ(
      Code("objects.update", R"({"updates":[{"id":4,"x":50},{"id":5,"x":51}],"base_revision":1})"),
      "done");
  ASSERT_EQ(Code("objects.update", R"({"updates":[{"id":5,"x":9}],"base_revision":2})", "user"),
            "done");
  EXPECT_EQ(Code("history.revert", R"({"transaction":1})"), "conflict");
  EXPECT_EQ(X(4), 50);
  ASSERT_EQ(Code("objects.update", R"({"updates":[{"id":5,"x":51}],"base_revision":3})", "user"),
            "done");
  EXPECT_EQ(Code("history.revert", R"({"transaction":1})"), "done");
  EXPECT_EQ(X(4), 60);
  EXPECT_EQ(X(5), 72);
}

TEST_F(SampleEditorWorldTest, RevertDoesNotLeaveOrphans) {
  ASSERT_EQ(Code("objects.create", R"({"objects":[{"asset":"zorvik_casa","x":0,"z":0}]})"), "done");
  ASSERT_EQ(Code("objects.create",
                 R"({"objects":[{"asset":"zorvik_porta","x":0,"z":3,"parent":13}]})", "user"),
            "done");
  EXPECT_EQ(Code("history.revert", R"({"transaction":1})"), "conflict");
  EXPECT_TRUE(world.objects.contains(13));
}

TEST_F(SampleEditorWorldTest, RestoreTakesBackTheAgentsWorkAndNotThePersons) {
  ASSERT_EQ(Code("history.checkpoint", R"({"name":"antes"})"), "done");
  ASSERT_EQ(Code("objects.update", R"({"updates":[{"id":4,"x":50}],"base_revision":1})"), "done");
  ASSERT_EQ(Code("objects.update", R"({"updates":[{"id":5,"x":1}],"base_revision":2})", "user"),
            "done");
  ASSERT_EQ(Code("objects.delete", R"({"ids":[4],"base_revision":3})"), "done");
  ASSERT_EQ(Code("history.undo", "{}"), "done");
  ASSERT_EQ(Code("history.restore", R"({"name":"antes"})"), "done");
  EXPECT_EQ(X(4), 60);
  EXPECT_EQ(X(5), 1);
}

}  // namespace
}  // namespace zorvik::sample_editor
