#include "core/platform/streams.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>

#include "core/platform/posix.h"

namespace zorvik::core::platform {
namespace {

// What kind of thing the descriptor is, as the file type bits of its mode; 0 when it can't be told.
mode_t FileType(int fd) {
  struct stat status = {};
  return fstat(fd, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

bool IsOpen(int fd) {
  return fcntl(fd, F_GETFD) != -1 || errno != EBADF;
}

// Whether the descriptor is open for something else than `opposite` (O_RDONLY or O_WRONLY) alone.
// What can't be told is found out by the first read or write.
bool Usable(int fd, int opposite) {
  const int flags = fcntl(fd, F_GETFL);
  return flags == -1 ? errno != EBADF : (flags & O_ACCMODE) != opposite;
}

bool QueuedBytes(int fd, std::size_t& count) {
  int queued = 0;
  if (ioctl(fd, FIONREAD, &queued) != 0 || queued < 0) return false;
  count = static_cast<std::size_t>(queued);
  return true;
}

short PollEvents(int fd, short events, int timeout_ms) {
  pollfd entry = {fd, events, 0};
  // A system short of memory can't tell just now.
  return RetryOnInterrupt([&] { return poll(&entry, 1, timeout_ms); }) < 0 ? short{0}
                                                                           : entry.revents;
}

// As InputStream::Peek. Only a read tells the end from nothing there, and QueuedBytes counts an
// urgent byte too, for which a read would wait for ever.
bool PeekSocket(int fd, std::size_t& available) {
  available = 0;
  char byte = 0;
  const ssize_t got = RetryOnInterrupt([&] { return recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT); });
  if (got < 0) return errno == EAGAIN || errno == EWOULDBLOCK;
  if (got == 0 || !QueuedBytes(fd, available)) return false;
  available = std::max<std::size_t>(available, 1);
  return true;
}

// Whoever reads a terminal that another job has in hand gets stopped.
bool InForeground(int fd) {
  return tcgetpgrp(fd) == getpgrp();
}

// As InputStream::Peek.
bool PeekTerminal(int fd, std::size_t& available) {
  available = 0;
  if (!InForeground(fd) || PollEvents(fd, POLLIN, 0) == 0) return true;
  if (!QueuedBytes(fd, available)) return false;
  // With nothing queued it is the end that was typed, which a read has to take.
  available = std::max<std::size_t>(available, 1);
  return true;
}

// Whether the call that failed just now is worth repeating: it was interrupted, or the descriptor
// is set not to block and `events` has been waited for.
bool WaitToRetry(int fd, short events) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
  return (PollEvents(fd, events, -1) & POLLNVAL) == 0;
}

}  // namespace

void PrepareStandardStreams() {
  // A placeholder of the wrong direction keeps the number of a missing stream occupied, and each
  // use of it fails as it would on the missing stream.
  // An end of a pipe is one that needs no file system.
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    std::array<int, 2> ends{};
    if (IsOpen(fd) || pipe(ends.data()) == -1) continue;
    // The reading end has the lowest free number, which is `fd`.
    if (fd == STDIN_FILENO) dup2(ends[1], fd);
    close(ends[1]);
  }
  std::signal(SIGPIPE, SIG_IGN);
  // A limit on the size of files is then a write that fails, as on a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
}

void WriteStandardError(std::string_view line) {
  // A pipe that has room at all takes PIPE_BUF bytes.
  while (!line.empty() && (PollEvents(STDERR_FILENO, POLLOUT, 0) & POLLOUT) != 0) {
    const ssize_t taken = RetryOnInterrupt([&] {
      return write(STDERR_FILENO, line.data(), std::min<std::size_t>(line.size(), PIPE_BUF));
    });
    if (taken <= 0) return;
    line.remove_prefix(static_cast<std::size_t>(taken));
  }
}

InputStream InputStream::Standard() {
  return Usable(STDIN_FILENO, O_WRONLY) ? Borrow(STDIN_FILENO) : InputStream();
}

InputStream InputStream::StandardWithTerminal() {
  InputStream stream = Standard();
  stream.is_terminal = stream.Valid() && isatty(STDIN_FILENO) == 1;
  stream.can_peek = stream.can_peek || stream.is_terminal;
  return stream;
}

InputStream InputStream::Borrow(std::intptr_t handle) {
  InputStream stream;
  stream.native = handle;
  const mode_t type = FileType(static_cast<int>(handle));
  stream.is_socket = type == S_IFSOCK;
  // What can't be told is taken for a pipe: files too can be asked how much is there.
  stream.can_peek = type == S_IFIFO || stream.is_socket || type == 0;
  return stream;
}

bool InputStream::Valid() const {
  return native >= 0;
}

bool InputStream::Peek(std::size_t& available) const {
  const int fd = static_cast<int>(native);
  if (is_socket) return PeekSocket(fd, available);
  if (is_terminal) return PeekTerminal(fd, available);
  // The bytes are counted after the question for the end, since the peer may write and go in
  // between. An idle server asks nothing but this.
  const short events = PollEvents(fd, POLLIN, 0);
  available = 0;
  if (events == 0) return true;
  const bool ended = (events & (POLLHUP | POLLERR | POLLNVAL)) != 0;
  if (!QueuedBytes(fd, available) && !ended) available = 1;
  return available > 0 || !ended;
}

bool InputStream::WaitForMore() const {
  return false;
}

void InputStream::AddTo(WaitSources& sources) const {
  const int fd = static_cast<int>(native);
  if (!Valid() || (is_socket && HasOnlyUrgentByte(fd)) || (is_terminal && !InForeground(fd)))
    return;
  sources.push_back(native);
}

bool InputStream::Read(char* bytes, std::size_t limit, std::size_t& count) const {
  const int fd = static_cast<int>(native);
  while (true) {
    const ssize_t got = read(fd, bytes, limit);
    if (got >= 0) {
      count = static_cast<std::size_t>(got);
      return true;
    }
    if (!WaitToRetry(fd, POLLIN)) return false;
  }
}

OutputStream OutputStream::Standard() {
  return Usable(STDOUT_FILENO, O_RDONLY) ? Borrow(STDOUT_FILENO) : OutputStream();
}

OutputStream OutputStream::Borrow(std::intptr_t handle) {
  OutputStream stream;
  stream.native = handle;
  return stream;
}

bool OutputStream::Valid() const {
  return native >= 0;
}

bool OutputStream::Write(const char* bytes, std::size_t size, std::size_t& count) const {
  const int fd = static_cast<int>(native);
  while (true) {
    const ssize_t taken = write(fd, bytes, size);
    if (taken >= 0) {
      count = static_cast<std::size_t>(taken);
      return true;
    }
    if (!WaitToRetry(fd, POLLOUT)) return false;
  }
}

}  // namespace zorvik::core::platform
