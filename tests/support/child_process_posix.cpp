#include "tests/support/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>

#include "core/win32.h"

namespace zorvik::tests {

void ChildProcess::Spawn(const ProgramStart& start) {
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

  const int out = static_cast<int>(output.writer.Get());
  if (start.non_blocking_output) fcntl(out, F_SETFL, O_WRONLY | O_NONBLOCK);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (!start.input_file)
    posix_spawn_file_actions_adddup2(&actions, static_cast<int>(input.reader.Get()), 0);
  else if (start.input_file->empty())
    posix_spawn_file_actions_addclose(&actions, 0);
  else
    posix_spawn_file_actions_addopen(&actions, 0, start.input_file->c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out, 1);
  if (!start.error_file.empty()) {
    posix_spawn_file_actions_addopen(&actions, 2, start.error_file.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
  }

  std::vector<std::string> arguments = start.arguments;
  arguments.insert(arguments.begin(), core::win32::ExecutablePath().parent_path() / start.program);
  std::vector<char*> pointers(arguments.size() + 1);
  std::transform(arguments.begin(), arguments.end(), pointers.begin(),
                 [](std::string& argument) { return argument.data(); });
  pid_t pid = -1;
  const int failure =
      posix_spawn(&pid, pointers[0], &actions, &attributes, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (failure != 0) throw std::runtime_error("the program doesn't start");
  id = static_cast<std::uint32_t>(pid);
}

bool ChildProcess::Running() {
  int status = 0;
  const auto pid = static_cast<pid_t>(id);
  if (!exit_code && waitpid(pid, &status, WNOHANG) == pid)
    exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return !exit_code;
}

void ChildProcess::Kill() {
  if (Running()) kill(static_cast<pid_t>(id), SIGKILL);
}

}  // namespace zorvik::tests
