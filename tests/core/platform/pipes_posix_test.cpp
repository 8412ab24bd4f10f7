// The traps that only Unix-domain sockets have. The tests stand in their own folder under /tmp,
// that of a user whom nobody else is, which takes root to become.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/fsuid.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "core/local_pipe/client.h"
#include "core/local_pipe/server.h"
#include "core/platform/files.h"

namespace zorvik::core {
namespace {

namespace fs = std::filesystem;

class PipesPosixTest : public testing::Test {
 protected:
  void SetUp() override {
    if (getuid() != 0) GTEST_SKIP() << "only root can test other users";
    Become(user);
  }
  void TearDown() override {
    if (IsSkipped()) return;
    BecomeRoot();
    fs::remove_all(folder);
    prctl(PR_SET_DUMPABLE, 1);  // Else the leak check can't look at this process.
  }

  static void BecomeRoot() { ASSERT_EQ(setresuid(0, 0, 0), 0); }
  // Acts as that user, who nevertheless gets through the mode of the folder.
  void Become(uid_t id) const {
    BecomeRoot();
    ASSERT_EQ(setresuid(user, id, 0), 0);
    setfsuid(user);
  }
  // A socket of that user behind `call` for the server's address.
  int Intrude(int (*call)(int, const sockaddr*, socklen_t), uid_t who) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    socket_file.copy(address.sun_path, sizeof address.sun_path - 1);
    const int intruder = socket(AF_UNIX, SOCK_STREAM, 0);
    Become(who);
    EXPECT_EQ(call(intruder, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_TRUE(call == connect || listen(intruder, 1) == 0);
    Become(user);
    return intruder;
  }

  // 0, or the number in the message of the failure. One that has none tells that nobody serves.
  int Failure(bool done) const {
    const std::size_t number = error.find("Windows ");
    if (done) return 0;
    return number == std::string::npos ? 2 : std::stoi(error.substr(number + 8));
  }
  int Open(const std::string& name) { return Failure(server.Open(name, error)); }
  int Connect(const std::string& name) { return Failure(client.Connect(name, 0, error)); }
  void ExpectServing() {
    EXPECT_EQ(Open("nome"), 0);
    EXPECT_EQ(Connect("nome"), 0);
    server.Poll(messages, closed);
    EXPECT_EQ(server.Connections(), 1u);
  }

  std::ptrdiff_t Files() const {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
  }

  const uid_t user = 1'000'000'000 + static_cast<uid_t>(getpid());
  const std::string folder = "/tmp/zorvik-" + std::to_string(user);
  const std::string socket_file = folder + "/nome.sock";
  LocalPipeServer server;
  LocalPipeClient client;
  std::vector<LocalPipeServer::Message> messages;
  std::vector<std::int32_t> closed;
  std::string error;
};

TEST_F(PipesPosixTest, RefusesNamesThatNoFileCanHave) {
  const std::size_t room = sizeof sockaddr_un{}.sun_path - 1 - (folder + "/.sock").size();
  for (const std::string& name : {std::string(), std::string(room + 1, 'x')}) {
    EXPECT_EQ(Open(name), 123);
    EXPECT_EQ(Connect(name), 123);
  }
  EXPECT_EQ(Open(std::string(room, 'x')), 0);
  EXPECT_EQ(Connect(std::string(room, 'x')), 0);
  ExpectServing();  // Under a shorter name, of which nothing of the longer one is left.
  EXPECT_EQ(Files(), 2);
}

TEST_F(PipesPosixTest, TrustsOnlyAPrivateFolderOfTheSameUser) {
  EXPECT_EQ(Connect("nome"), 2);
  EXPECT_FALSE(fs::exists(folder));
  BecomeRoot();
  const auto expect_refusal = [&](bool set) {
    EXPECT_TRUE(set);
    Become(user);
    EXPECT_EQ(Open("nome"), 5);
    EXPECT_EQ(Connect("nome"), 5);
    EXPECT_FALSE(platform::TrustedFolder().Open(folder + "/."));
    EXPECT_FALSE(platform::CreatePrivateFolders(folder + "/editors"));
    BecomeRoot();
    fs::remove(folder);
  };
  expect_refusal(mkdir(folder.c_str(), 0710) == 0 && chown(folder.c_str(), user, 0) == 0);
  expect_refusal(close(creat(folder.c_str(), 0700)) == 0 && chown(folder.c_str(), user, 0) == 0);
  expect_refusal(mkdir(folder.c_str(), 0700) == 0 && chown(folder.c_str(), user + 1, 0) == 0);
  const std::string real = folder + "-real";
  ASSERT_TRUE(mkdir(real.c_str(), 0700) == 0 && chown(real.c_str(), user, 0) == 0);
  expect_refusal(symlink(real.c_str(), folder.c_str()) == 0 &&
                 lchown(folder.c_str(), user, 0) == 0);
  fs::remove(real);
  Become(user);
  ExpectServing();
  EXPECT_EQ(fs::status(folder).permissions(), fs::perms(0700));
  EXPECT_EQ(fs::status(socket_file).permissions(), fs::perms(0600));
}

TEST_F(PipesPosixTest, StandsInTheSessionsFolderIfThatIsTheUsersOwn) {
  const fs::path session = "/run/user/" + std::to_string(user);
  const struct {
    mode_t mode;
    uid_t owner;
    fs::path place;
  } kCases[] = {{0700, user, session / "zorvik"}, {0710, user, folder}, {0700, user + 1, folder}};
  for (const auto& c : kCases) {
    BecomeRoot();
    fs::create_directories(session);
    ASSERT_EQ(chmod(session.c_str(), c.mode) + chown(session.c_str(), c.owner, 0), 0);
    Become(user);
    LocalPipeServer here;
    EXPECT_TRUE(here.Open("nome", error)) << error;
    EXPECT_TRUE(fs::exists(c.place / "nome.sock")) << c.place;
    EXPECT_EQ(fs::status(c.place).permissions(), fs::perms(0700));
    EXPECT_EQ(platform::TemporaryFolder(), c.place);
  }
  BecomeRoot();
  fs::remove_all(session);
}

TEST_F(PipesPosixTest, ANameIsFreeHoweverItsServerDiedAndItsFilesGo) {
  const pid_t child = fork();
  if (child == 0) {
    Open("nome");
    raise(SIGSTOP);
  }
  ASSERT_EQ(waitpid(child, nullptr, WUNTRACED), child);
  EXPECT_EQ(Open("nome"), 5);
  kill(child, SIGKILL);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  EXPECT_TRUE(fs::exists(socket_file));
  EXPECT_EQ(Connect("nome"), 2);
  LocalPipeServer other;
  ASSERT_TRUE(other.Open("outro", error)) << error;
  EXPECT_EQ(Files(), 2);  // Those of the dead have gone.
  ExpectServing();
  EXPECT_EQ(Files(), 4);
  other.Close();
  // A cleaner leaves out what it can't lock alone.
  const int cleaner = open(folder.c_str(), O_RDONLY);
  EXPECT_EQ(flock(cleaner, LOCK_EX | LOCK_NB), -1);
  server.Close();
  EXPECT_EQ(flock(cleaner, LOCK_EX | LOCK_NB), 0);
  EXPECT_EQ(Open("nome"), 0);  // Nor does a cleaner at work keep an editor out.
  close(cleaner);
  // A server that leaves spares the next one, which somebody has made room for.
  fs::remove_all(folder);
  ASSERT_TRUE(other.Open("nome", error)) << error;
  server.Close();
  EXPECT_EQ(Connect("nome"), 0);
  other.Close();
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(PipesPosixTest, WhoNeverStopsWritingIsHeardInParts) {
  ASSERT_EQ(Open("nome"), 0);
  fs::remove(socket_file);
  const int host = Intrude(bind, user);
  // Far more than a pipe holds: many bytes, and many lines.
  for (const std::string& line : {std::string(999, 'x') + '\n', std::string("1\n")}) {
    ASSERT_EQ(Connect("nome"), 0);
    const int peer = accept(host, nullptr, nullptr);
    const int room = 64'000'000;
    BecomeRoot();
    ASSERT_EQ(setsockopt(peer, SOL_SOCKET, SO_SNDBUFFORCE, &room, sizeof room), 0);
    Become(user);
    std::string flood;
    while (flood.size() < 8'000'000) flood += line;
    ASSERT_EQ(send(peer, flood.data(), flood.size(), MSG_DONTWAIT),
              static_cast<ssize_t>(flood.size()));
    Lines lines;
    EXPECT_TRUE(client.Receive(lines, error)) << error;
    EXPECT_LE(lines.size(), line.size() > 2 ? 5'300U : 800'000U);
    while (lines.size() < flood.size() / line.size()) ASSERT_TRUE(client.Receive(lines, error));
    close(peer);
  }
  close(host);
}

TEST_F(PipesPosixTest, AnUrgentByteIsWaitedForByNobody) {
  ASSERT_EQ(Open("nome"), 0);
  fs::remove(socket_file);
  const int host = Intrude(bind, user);
  ASSERT_EQ(Connect("nome"), 0);
  const int peer = accept(host, nullptr, nullptr);
  Lines lines;
  send(peer, "x", 1, MSG_OOB);  // Not every system knows it.
  EXPECT_TRUE(client.Receive(lines, error)) << error;
  EXPECT_EQ(send(peer, "um\n", 3, 0), 3);
  EXPECT_TRUE(client.Receive(lines, error)) << error;
  EXPECT_EQ(lines, Lines{"um"});
  close(peer);
  close(host);
}

TEST_F(PipesPosixTest, NeitherEndDealsWithAnotherUser) {
  ASSERT_EQ(Open("nome"), 0);
  const int guest = Intrude(connect, user + 1);
  ASSERT_EQ(send(guest, "um\n", 3, MSG_NOSIGNAL), 3);
  for (int poll = 0; poll < 2; ++poll) server.Poll(messages, closed);
  EXPECT_EQ(server.Connections() + messages.size() + closed.size(), 0u);
  char byte = 0;
  EXPECT_LE(recv(guest, &byte, 1, MSG_DONTWAIT), 0);
  EXPECT_EQ(Connect("nome"), 0);

  fs::remove(socket_file);
  const int host = Intrude(bind, user + 1);
  EXPECT_EQ(Connect("nome"), 5);
  close(guest);
  close(host);
}

TEST_F(PipesPosixTest, RunningOutOfDescriptorsIsAnErrorLikeAnyOther) {
  ASSERT_EQ(Open("nome"), 0);
  std::vector<int> all;
  for (int number = dup(0); number != -1; number = dup(0)) all.push_back(number);
  EXPECT_EQ(Connect("nome"), 4);
  for (const int number : all) close(number);
  EXPECT_EQ(Connect("nome"), 0);
}

}  // namespace
}  // namespace zorvik::core
