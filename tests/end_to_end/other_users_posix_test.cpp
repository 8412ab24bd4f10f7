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

#include "core/json.h"
#include "core/process.h"
#include "core/win32.h"
#include "tests/support/editor_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

namespace fs = std::filesystem;
using core::Json;

std::string Message(const Json& result) {
  return result.At("structuredContent").At("error").At("message").text;
}

class OtherUsersTest : public testing::Test {
 protected:
  void SetUp() override {
    if (getuid() != 0) Skip("only root can become other users");
    if (IsSkipped()) return;
    Become(user);
    const fs::path programs = core::win32::ExecutablePath().parent_path();
    if (access((programs / "zorvik_mcp").c_str(), X_OK) != 0) {
      BecomeRoot();
      Skip("other users can't start programs in " + programs.string());
      return;
    }
    home.emplace();
  }

  void TearDown() override {
    if (getuid() == 0) return;
    BecomeRoot();
    home.reset();
    fs::remove_all(pipes);
    fs::remove_all("/tmp/zorvik-" + std::to_string(intruder));
    prctl(PR_SET_DUMPABLE, 1);  // Else the leak check can't look at this process.
  }

  static void Skip(const std::string& why) {
    std::cerr << "!!! SKIPPED: " << why << " !!!\n";
    GTEST_SKIP() << why;
  }

  // Programs that are started from now on are that user's alone. This process keeps a way back.
  static void Become(uid_t id) {
    BecomeRoot();
    ASSERT_EQ(setgroups(0, nullptr), 0);
    ASSERT_EQ(setresgid(id, id, 0), 0);
    ASSERT_EQ(setresuid(id, id, 0), 0);
  }
  static void BecomeRoot() {
    ASSERT_EQ(setresuid(0, 0, 0), 0);
    ASSERT_EQ(setresgid(0, 0, 0), 0);
  }

  // What a system call of the intruder's came to.
  template <typename Call>
  static int ErrorOf(Call call) {
    return call() == -1 ? errno : 0;
  }

  sockaddr_un Address(const std::string& pipe) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (pipes / (pipe + ".sock")).string().copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
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
  const sockaddr_un address = Address(pipe);
  ASSERT_TRUE(fs::exists(address.sun_path));
  // The folder above is open to all, so that the programs' own folders have to protect.
  ASSERT_EQ(chmod(home->Path().c_str(), 0777), 0);

  Become(intruder);
  const std::string own = (home->Path() / "alheio").string();
  const int made = open(own.c_str(), O_RDWR | O_CREAT, 0600);
  const int attacker = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_TRUE(made >= 0 && attacker >= 0);
  const auto* place = reinterpret_cast<const sockaddr*>(&address);
  for (const fs::path& secret : {home->Editors(), home->Path() / "logs", pipes, editor.RecordPath(),
                                 client.LogPath(), pipes / (pipe + ".lock")}) {
    SCOPED_TRACE(secret);
    EXPECT_EQ(ErrorOf([&] { return open(secret.c_str(), O_RDONLY); }), EACCES);
  }
  EXPECT_EQ(ErrorOf([&] { return connect(attacker, place, sizeof address); }), EACCES);
  EXPECT_EQ(ErrorOf([&] { return bind(attacker, place, sizeof address); }), EACCES);
  EXPECT_EQ(ErrorOf([&] { return unlink(address.sun_path); }), EACCES);
  EXPECT_EQ(ErrorOf([&] { return rename(own.c_str(), address.sun_path); }), EACCES);
  EXPECT_EQ(ErrorOf([&] { return rename(own.c_str(), editor.RecordPath().c_str()); }), EACCES);
  EXPECT_EQ(ErrorOf([&] { return rename(pipes.c_str(), "/tmp/zorvik-alheio"); }), EPERM);
  EXPECT_EQ(ErrorOf([&] { return kill(static_cast<pid_t>(editor.process.Id()), 0); }), EPERM);
  close(made);
  close(attacker);
  {
    // Not even a server that has got hold of the record gets through.
    const TemporaryHome stolen;
    WriteText(stolen.Editors() / "1.json", record);
    McpClient thief;
    EXPECT_EQ(Outcome(thief.Call("world_info")), "editor_disconnected");
  }

  Become(user);
  EXPECT_EQ(Outcome(client.Call("world_info")), "ok");
  EXPECT_EQ(ReadText(editor.RecordPath()), record);
}

TEST_F(OtherUsersTest, PlaceThatIsntTheUsersAloneIsRefusedByBothEnds) {
  const std::string pid = std::to_string(getpid());
  WriteText(home->Editors() / (pid + ".json"),
            R"({"editor_id":"falso","token":"t","pipe":"isca","pid":)" + pid + "}");
  McpClient client;
  const auto expect_refusal = [&] {
    ProgramStart start{.program = "zorvik_sample_editor", .error_file = home->Path() / "erros"};
    ChildProcess editor(start);
    EXPECT_EQ(editor.Wait(), 1);
    EXPECT_TRUE(ReadText(start.error_file).ends_with(" nao abriu (erro do Windows 5)\n"));
    EXPECT_FALSE(fs::exists(home->Editors() / (std::to_string(editor.Id()) + ".json")));
    const Json result = client.Call("world_info");
    EXPECT_EQ(Outcome(result), "editor_disconnected");
    EXPECT_EQ(Message(result),
              "Sem conexao com o editor falso: "
              "o editor em isca nao aceitou a conexao (erro do Windows 5)");
    client.Ask("ping");
  };

  // The intruder was there first, and listens.
  Become(intruder);
  const mode_t mask = umask(0);
  ASSERT_EQ(mkdir(pipes.c_str(), 0777), 0);
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
  const sockaddr_un address = Address("isca");
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 4), 0);
  umask(mask);
  Become(user);
  expect_refusal();
  EXPECT_EQ(ErrorOf([&] { return accept(listener, nullptr, nullptr); }), EAGAIN);
  close(listener);

  // The folder is the user's, but others get in.
  BecomeRoot();
  ASSERT_EQ(chown(pipes.c_str(), user, user), 0);
  Become(user);
  expect_refusal();
  fs::remove_all(pipes);
  EditorProcess editor("vale");
  EXPECT_EQ(Outcome(client.Call("world_info", R"({"editor_id":"vale"})")), "ok");
}

}  // namespace
}  // namespace zorvik::tests
