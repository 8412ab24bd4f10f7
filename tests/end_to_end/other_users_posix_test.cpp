// What another user of the machine can do to the programs of this one: nothing. Both are users whom
// nobody else is, which takes root to become.

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include "core/win32.h"
#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

namespace fs = std::filesystem;

// What a system call came to.
int ErrorOf(int result) {
  return result == -1 ? errno : 0;
}

class OtherUsersTest : public testing::Test {
 protected:
  void SetUp() override {
    const fs::path programs = core::win32::ExecutablePath().parent_path();
    if (getuid() == 0) Become(user);
    if (getuid() != user || access((programs / "zorvik_mcp").c_str(), X_OK) != 0) {
      std::cerr << "!!! SKIPPED: only root can become other users, who can start programs in "
                << programs << " !!!\n";
      GTEST_SKIP();
    }
    home.emplace();
  }

  void TearDown() override {
    if (ErrorOf(setresuid(0, 0, 0)) != 0) return;
    Become(0);
    home.reset();
    fs::remove_all(pipes);
    fs::remove_all("/tmp/zorvik-" + std::to_string(intruder));
    prctl(PR_SET_DUMPABLE, 1);  // Else the leak check can't look at this process.
  }

  // Programs that are started from now on are that user's alone. This process keeps a way back.
  static void Become(uid_t id) {
    ASSERT_EQ(setresuid(0, 0, 0), 0);
    ASSERT_EQ(setgroups(0, nullptr), 0);
    ASSERT_EQ(setresgid(id, id, 0), 0);
    ASSERT_EQ(setresuid(id, id, 0), 0);
  }

  // Calls `function` (connect or bind) for that pipe's place.
  template <typename Function>
  int AtPlace(Function function, int socket, const std::string& pipe) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (pipes / (pipe + ".sock")).string().copy(address.sun_path, sizeof address.sun_path - 1);
    return ErrorOf(function(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address));
  }

  const uid_t user = 1'100'000'000 + static_cast<uid_t>(getpid());
  const uid_t intruder = user + 100'000'000;
  const fs::path pipes = "/tmp/zorvik-" + std::to_string(user);
  std::optional<TemporaryHome> home;
};

TEST_F(OtherUsersTest, CantReadATokenOrReachAnEditorOrTakeItsPlace) {
  EditorProcess editor("vale");
  McpClient client;
  ASSERT_EQ(Outcome(client.Call("world_info")), "ok");
  const std::string record = ReadText(editor.RecordPath());
  const std::string pipe = Parse(record).At("pipe").text;
  const fs::path place = pipes / (pipe + ".sock");
  ASSERT_TRUE(fs::exists(place));
  // The folder above is open to all, so that the programs' own folders have to protect.
  ASSERT_EQ(chmod(home->Path().c_str(), 0777), 0);

  Become(intruder);
  const fs::path own = home->Path() / "alheio";
  WriteText(own, "");
  const int attacker = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_TRUE(fs::exists(own) && attacker >= 0);
  for (const fs::path& secret : {home->Editors(), home->Path() / "logs", pipes, editor.RecordPath(),
                                 client.LogPath(), pipes / (pipe + ".lock")})
    EXPECT_EQ(ErrorOf(open(secret.c_str(), O_RDONLY)), EACCES) << secret;
  EXPECT_EQ(AtPlace(connect, attacker, pipe), EACCES);
  EXPECT_EQ(AtPlace(bind, attacker, pipe), EACCES);
  close(attacker);
  EXPECT_EQ(ErrorOf(unlink(place.c_str())), EACCES);
  EXPECT_EQ(ErrorOf(rename(own.c_str(), place.c_str())), EACCES);
  EXPECT_EQ(ErrorOf(rename(own.c_str(), editor.RecordPath().c_str())), EACCES);
  EXPECT_EQ(ErrorOf(rename(pipes.c_str(), "/tmp/zorvik-alheio")), EPERM);
  EXPECT_EQ(ErrorOf(kill(static_cast<pid_t>(editor.process.Id()), 0)), EPERM);
  {
    // Not even a server that has got hold of the record gets through.
    const TemporaryHome stolen;
    WriteText(stolen.Editors() / "1.json", record);
    EXPECT_EQ(Outcome(McpClient().Call("world_info")), "editor_disconnected");
  }

  Become(user);
  EXPECT_EQ(Outcome(client.Call("world_info")), "ok");
  EXPECT_EQ(ReadText(editor.RecordPath()), record);
}

TEST_F(OtherUsersTest, EachHasAHomeWithoutBeingToldOne) {
  const ScopedEnvironment no_home("ZORVIK_MCP_HOME", std::nullopt);
  const ScopedEnvironment no_base("LOCALAPPDATA", std::nullopt);
  for (const uid_t id : {intruder, user}) {
    Become(id);
    EditorProcess editor("vale");
    McpClient client;
    EXPECT_EQ(Outcome(client.Call("world_info")), "ok");
    EXPECT_TRUE(client.Log().ends_with("\n"));
  }

  // Somebody else has been there first, with an editor of theirs.
  fs::remove_all(pipes);
  const fs::path record = core::McpHome() / "editors" / "1.json";
  Become(intruder);
  WriteText(record, R"({"pid":1,"pipe":"p"})");
  for (fs::path path = record; path != pipes.parent_path(); path = path.parent_path())
    ASSERT_EQ(chmod(path.c_str(), 0777), 0);
  Become(user);
  McpClient client;
  for (int turn = 0; turn < 2; ++turn) EXPECT_EQ(Outcome(client.Call("world_info")), "no_editor");
  EXPECT_EQ(client.Log(), "");
  const std::string notice = "zorvik: pasta recusada: " + pipes.string() +
                             ": pertence a outro usuário (uid " + std::to_string(intruder) + ").\n";
  const std::string errors = client.Errors();
  EXPECT_NE(errors.find(notice), errors.npos);
  EXPECT_EQ(errors.find("pasta recusada"), errors.rfind("pasta recusada"));
}

}  // namespace
}  // namespace zorvik::tests
