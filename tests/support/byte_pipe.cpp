#include "tests/support/byte_pipe.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include <array>
#include <stdexcept>

namespace zorvik::tests {

void OwnedHandle::Close() {
  const std::intptr_t closing = std::exchange(native, -1);
  if (closing == -1) return;
#ifdef _WIN32
  // A handle is a number that Windows types as a pointer.
  CloseHandle(reinterpret_cast<HANDLE>(closing));  // NOLINT(performance-no-int-to-ptr)
#else
  close(static_cast<int>(closing));
#endif
}

BytePipe::BytePipe([[maybe_unused]] Kind kind) {
#ifdef _WIN32
  std::array<HANDLE, 2> ends{};
  const bool made = CreatePipe(&ends[0], &ends[1], nullptr, 65'536) != FALSE;
  reader = OwnedHandle(reinterpret_cast<std::intptr_t>(ends[0]));
  writer = OwnedHandle(reinterpret_cast<std::intptr_t>(ends[1]));
#else
  std::array<int, 2> ends = {-1, -1};
  const bool made = kind == Kind::SocketPair
                        ? socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0
                        : pipe2(ends.data(), O_CLOEXEC) == 0;
  reader = OwnedHandle(ends[0]);
  writer = OwnedHandle(ends[1]);
#endif
  if (!made) throw std::runtime_error("no pipe");
}

}  // namespace zorvik::tests
