// The traps that only Unix-domain sockets have. The tests stand in their own folder under /tmp,
// that of a user whom nobody else is, which takes root to become.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/fsuid.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/local_pipe/client.h"
#include "core/local_pipe/server.h"

namespace zorvik::core {
namespace {

namespace fs = std::filesystem;

class PipesPosixTest : public testing::Test {
 protected:
  void SetUp() override {
    if (getuid() != 0) GTEST_SKIP() << "only root can test other users";
    user = 1'000'000'000 + static_cast<uid_t>(getpid());
    folder = "/tmp/zorvik-" + std::to_string(user);
    ASSERT_EQ(seteuid(user), 0);
  }

  void TearDown() override {
    if (getuid() == 0) {
      BecomeRoot();
      fs::remove_all(folder);
      prctl(PR_SET_DUMPABLE, 1);  // Else the leak check can't look at this process.
    }
  }

  static void BecomeRoot() { ASSERT_EQ(setresuid(0, 0, 0), 0); }

  // Acts as another user who nevertheless gets through the folder's mode.
  void BecomeIntruder() {
    BecomeRoot();
    ASSERT_EQ(setresuid(user, user + 1, 0), 0);
    setfsuid(user);
  }

  void BecomeUserAgain() {
    BecomeRoot();
    ASSERT_EQ(seteuid(user), 0);
  }

  static std::string NotOpened(const std::string& name, int code) {
    return "o pipe " + name + " nao abriu (erro do Windows " + std::to_string(code) + ")";
  }
  static std::string NotAccepted(const std::string& name, int code) {
    return "o editor em " + name + " nao aceitou a conexao (erro do Windows " +
           std::to_string(code) + ")";
  }

  sockaddr_un Address() const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (folder + "/nome.sock").copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
  }

  void ExpectServing() {
    EXPECT_TRUE(server.Open("nome", error)) << error;
    EXPECT_TRUE(client.Connect("nome", 0, error)) << error;
    server.Poll(messages, closed);
    EXPECT_EQ(server.Connections(), 1u);
  }

  uid_t user = 0;
  std::string folder;
  LocalPipeServer server;
  LocalPipeClient client;
  std::vector<LocalPipeServer::Message> messages;
  std::vector<std::int32_t> closed;
  std::string error;
};

TEST_F(PipesPosixTest, RefusesNamesThatNoFileCanHave) {
  const std::size_t room = sizeof sockaddr_un{}.sun_path - 1 - (folder + "/.sock").size();
  for (const std::string& name : {std::string(), std::string("a/b"), std::string("../nome"),
                                  std::string("a\0b", 3), std::string(room + 1, 'x')}) {
    EXPECT_FALSE(server.Open(name, error));
    EXPECT_EQ(error, NotOpened(name, 123));
    EXPECT_FALSE(client.Connect(name, 0, error));
    EXPECT_EQ(error, NotAccepted(name, 123));
  }
  const std::string longest(room, 'x');
  EXPECT_TRUE(server.Open(longest, error)) << error;
  EXPECT_TRUE(client.Connect(longest, 0, error)) << error;
}

TEST_F(PipesPosixTest, TrustsOnlyAPrivateFolderOfTheSameUser) {
  const std::string real = folder + "-real";
  const std::vector<std::pair<const char*, std::function<void()>>> traps = {
      {"link",
       [&] {
         fs::create_directory(real);
         fs::permissions(real, fs::perms::owner_all);
         fs::create_directory_symlink(real, folder);
       }},
      {"open to others",
       [&] {
         fs::create_directory(folder);
         ASSERT_EQ(chmod(folder.c_str(), 0710), 0);
       }},
      {"a file", [&] { std::ofstream{folder}; }},
      {"another owner",
       [&] {
         fs::create_directory(folder);
         ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
         BecomeRoot();
         ASSERT_EQ(chown(folder.c_str(), user + 1, 0), 0);
         BecomeUserAgain();
       }},
  };
  EXPECT_FALSE(client.Connect("nome", 0, error));
  EXPECT_EQ(error, "nenhum editor escuta em nome");
  EXPECT_FALSE(fs::exists(folder));
  for (const auto& [what, set] : traps) {
    SCOPED_TRACE(what);
    set();
    EXPECT_FALSE(server.Open("nome", error));
    EXPECT_EQ(error, NotOpened("nome", 5));
    EXPECT_FALSE(client.Connect("nome", 0, error));
    EXPECT_EQ(error, NotAccepted("nome", 5));
    BecomeRoot();
    fs::remove(folder);
    fs::remove(real);
    BecomeUserAgain();
  }
  ExpectServing();
  struct stat status {};
  ASSERT_EQ(stat(folder.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700u);
  ASSERT_EQ(stat(Address().sun_path, &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(PipesPosixTest, ANameIsFreeHoweverItsServerDied) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    const char answer = server.Open("nome", error) ? 'y' : 'n';
    if (write(ready[1], &answer, 1) == 1) pause();
    _exit(1);
  }
  char answer = 0;
  ASSERT_EQ(read(ready[0], &answer, 1), 1);
  ASSERT_EQ(answer, 'y');
  EXPECT_FALSE(server.Open("nome", error));
  EXPECT_EQ(error, NotOpened("nome", 5));

  kill(child, SIGKILL);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  EXPECT_TRUE(fs::exists(folder + "/nome.sock"));
  EXPECT_FALSE(client.Connect("nome", 1'000, error));
  EXPECT_EQ(error, "nenhum editor escuta em nome");
  ExpectServing();
  server.Close();
  EXPECT_TRUE(fs::is_empty(folder));
  close(ready[0]);
  close(ready[1]);
}

TEST_F(PipesPosixTest, ALeavingServerSparesTheFilesOfTheNextOne) {
  ExpectServing();
  fs::remove_all(folder);
  LocalPipeServer next;
  ASSERT_TRUE(next.Open("nome", error)) << error;
  server.Close();
  EXPECT_TRUE(client.Connect("nome", 0, error)) << error;
}

TEST_F(PipesPosixTest, CutsOffAClientOfAnotherUser) {
  ASSERT_TRUE(server.Open("nome", error));
  const sockaddr_un address = Address();
  const int intruder = socket(AF_UNIX, SOCK_STREAM, 0);
  BecomeIntruder();
  ASSERT_EQ(connect(intruder, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  BecomeUserAgain();
  ASSERT_EQ(send(intruder, "um\n", 3, MSG_NOSIGNAL), 3);
  server.Poll(messages, closed);
  server.Poll(messages, closed);
  EXPECT_EQ(server.Connections(), 0u);
  EXPECT_TRUE(messages.empty());
  EXPECT_TRUE(closed.empty());
  char byte = 0;
  EXPECT_LE(recv(intruder, &byte, 1, MSG_DONTWAIT), 0);
  EXPECT_TRUE(client.Connect("nome", 0, error)) << error;
  close(intruder);
}

TEST_F(PipesPosixTest, RefusesAServerOfAnotherUser) {
  ASSERT_TRUE(server.Open("nome", error));
  const sockaddr_un address = Address();
  ASSERT_EQ(unlink(address.sun_path), 0);
  const int intruder = socket(AF_UNIX, SOCK_STREAM, 0);
  BecomeIntruder();
  ASSERT_EQ(bind(intruder, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(intruder, 1), 0);
  BecomeUserAgain();
  EXPECT_FALSE(client.Connect("nome", 0, error));
  EXPECT_EQ(error, NotAccepted("nome", 5));
  close(intruder);
}

TEST_F(PipesPosixTest, RunningOutOfDescriptorsIsAnErrorLikeAnyOther) {
  ASSERT_TRUE(server.Open("nome", error));
  std::vector<int> all;
  for (int number = dup(0); number != -1; number = dup(0)) all.push_back(number);
  EXPECT_FALSE(client.Connect("nome", 0, error));
  EXPECT_EQ(error, NotAccepted("nome", 4));
  for (const int number : all) close(number);
  EXPECT_TRUE(client.Connect("nome", 0, error)) << error;
}

}  // namespace
}  // namespace zorvik::core
