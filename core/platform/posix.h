#pragma once

#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

// The small change of the POSIX sources in this folder. Nobody else includes it.
namespace zorvik::core::platform {

// The result of a system call that says -1 on failure, made again as long as a signal interrupts
// it.
template <class Call>
auto RetryOnInterrupt(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

// An open file or socket, closed at the end of the scope.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int opened) : number(opened) {}
  Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number, other.number);
    return *this;
  }
  ~Descriptor() { Reset(); }

  void Reset() {
    if (Valid()) close(number);
    number = -1;
  }
  bool Valid() const { return number != -1; }
  int Get() const { return number; }

 private:
  int number = -1;
};

// Whether all that a socket has is an urgent byte. No read brings it, but a poll reports it for
// ever.
inline bool HasOnlyUrgentByte(int socket) {
  int queued = 0;
  char byte = 0;
  return ioctl(socket, FIONREAD, &queued) == 0 && queued > 0 &&
         recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == -1 && errno == EAGAIN;
}

}  // namespace zorvik::core::platform
