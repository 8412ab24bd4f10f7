#include "tests/support/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <thread>
#include <utility>

#include "core/win32.h"

namespace zorvik::tests {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

[[noreturn]] void Fail(const char* what) {
  throw std::runtime_error(what);
}

// A descriptor that closes itself.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int opened) : number(opened) {}
  ~Descriptor() { Reset(); }
  Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    Reset();
    number = std::exchange(other.number, -1);
    return *this;
  }
  int Get() const { return number; }
  void Reset() {
    if (number >= 0) close(number);
    number = -1;
  }

 private:
  int number = -1;
};

struct Ends {
  Descriptor reader;
  Descriptor writer;
};

Ends Connect(bool by_sockets) {
  std::array<int, 2> pair{};
  const int made = by_sockets ? socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data())
                              : pipe2(pair.data(), O_CLOEXEC);
  if (made != 0) Fail("no pipe");
  return {Descriptor(pair[0]), Descriptor(pair[1])};
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

struct ChildProcess::Impl {
  pid_t pid = -1;
  Descriptor input;
  Descriptor output;
  std::optional<int> ended;
};

ChildProcess::ChildProcess(const ProgramStart& start) : impl(std::make_unique<Impl>()) {
  // A program that goes away must fail our writes and not end this process. The program itself gets
  // the default back, or its own care about broken pipes would never be put to the test.
  std::signal(SIGPIPE, SIG_IGN);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t defaults;
  sigemptyset(&defaults);
  sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

  const bool sockets = start.input == ProgramStart::Input::SocketPair;
  Ends input;
  Ends output = Connect(sockets);
  if (start.non_blocking_output) fcntl(output.writer.Get(), F_SETFL, O_WRONLY | O_NONBLOCK);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  switch (start.input) {
    case ProgramStart::Input::Pipe:
    case ProgramStart::Input::SocketPair:
      input = Connect(sockets);
      posix_spawn_file_actions_adddup2(&actions, input.reader.Get(), 0);
      break;
    case ProgramStart::Input::File:
      posix_spawn_file_actions_addopen(&actions, 0, start.input_file.c_str(), O_RDONLY, 0);
      break;
    case ProgramStart::Input::Null:
      posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
      break;
    case ProgramStart::Input::Closed:
      posix_spawn_file_actions_addclose(&actions, 0);
      break;
  }
  posix_spawn_file_actions_adddup2(&actions, output.writer.Get(), 1);
  if (!start.error_file.empty()) {
    posix_spawn_file_actions_addopen(&actions, 2, start.error_file.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
  }

  const std::string path = (core::win32::ExecutablePath().parent_path() / start.program).string();
  std::vector<std::string> arguments = start.arguments;
  arguments.insert(arguments.begin(), path);
  const int failure = posix_spawn(&impl->pid, path.c_str(), &actions, &attributes,
                                  Pointers(arguments).data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (failure != 0) Fail("the program doesn't start");
  impl->input = std::move(input.writer);
  impl->output = std::move(output.reader);
}

ChildProcess::~ChildProcess() {
  Kill();
  if (!impl->ended) waitpid(impl->pid, nullptr, 0);
}

std::uint32_t ChildProcess::Id() const {
  return static_cast<std::uint32_t>(impl->pid);
}

bool ChildProcess::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(impl->input.Get(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

void ChildProcess::CloseInput() {
  impl->input.Reset();
}
void ChildProcess::CloseOutput() {
  impl->output.Reset();
}

bool ChildProcess::ReadSome(std::string& bytes) {
  pollfd wait{impl->output.Get(), POLLIN, 0};
  if (poll(&wait, 1, static_cast<int>(milliseconds(kPatience).count())) <= 0) Fail("no output");
  std::array<char, 65536> chunk{};
  const ssize_t count = read(impl->output.Get(), chunk.data(), chunk.size());
  if (count <= 0) return false;
  bytes.append(chunk.data(), static_cast<std::size_t>(count));
  return true;
}

bool ChildProcess::Running() {
  int status = 0;
  if (!impl->ended && waitpid(impl->pid, &status, WNOHANG) == impl->pid)
    impl->ended = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return !impl->ended;
}

int ChildProcess::Wait() {
  const auto limit = steady_clock::now() + kPatience;
  while (Running()) {
    if (steady_clock::now() > limit) Fail("the program doesn't end");
    std::this_thread::sleep_for(milliseconds(1));
  }
  return *impl->ended;
}

void ChildProcess::Kill() {
  if (Running()) kill(impl->pid, SIGKILL);
}

}  // namespace zorvik::tests
