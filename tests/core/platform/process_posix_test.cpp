#include "core/process.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "tests/support/temporary_home.h"

namespace zorvik::core {
namespace {

// What the system doesn't tell about a process must never end its record.
TEST(ProcessPosixTest, OnlyAProcessThatIsSurelyGoneIsGone) {
  const tests::TemporaryHome home;
  tests::WriteText(home.Path() / "vazio", "");
  sock_filter refuse_kill[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                               BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_kill, 0, 1),
                               BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EACCES),
                               BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog filter = {std::size(refuse_kill), refuse_kill};
  const auto forbid_asking = [&] {
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter);
  };
  const auto hide_the_status = [&] {  // Changes nothing for anybody but root.
    unshare(CLONE_NEWNS);
    mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    mount((home.Path() / "vazio").c_str(), "/proc/self/status", nullptr, MS_BIND, nullptr);
  };
  for (const bool forbidden : {true, false}) {
    const pid_t child = fork();
    if (child == 0) {
      forbidden ? forbid_asking() : hide_the_status();
      _exit(ProcessAlive(CurrentProcessId()) ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
}

TEST(ProcessPosixTest, AZombieIsNotRunning) {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  siginfo_t info = {};
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
  EXPECT_FALSE(ProcessAlive(static_cast<std::uint64_t>(child)));
  waitpid(child, nullptr, 0);
  EXPECT_FALSE(ProcessAlive(static_cast<std::uint64_t>(child)));
}

}  // namespace
}  // namespace zorvik::core
