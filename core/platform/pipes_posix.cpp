// A pipe NAME is the Unix-domain stream socket NAME.sock in PrivateFolder(). Beside it stands
// NAME.lock, on which the serving process holds a lock for as long as it lives, so that a name is
// free again however its server died, and a socket file left behind says nothing.
//
// An instance is a listening socket of its own with room for one client that hasn't been accepted
// yet. It is closed as soon as that client is accepted; until the next one is made, the lock tells
// a client that the name is busy and not gone.
//
// Servers that were killed leave their two files behind. Whoever claims a name removes those of
// all names whose lock nobody holds. The folder is locked as a whole, with the kind of lock that
// cleaners of /tmp respect, or an editor that runs for weeks would lose its files to them.

#include "core/platform/pipes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include "core/platform/error_codes.h"
#include "core/platform/pipe_names.h"
#include "core/platform/posix.h"
#include "core/platform/private_folder_posix.h"

namespace zorvik::core::platform {
namespace {

// Room for a good piece of an image, so that the two ends needn't take turns so often. The system
// cuts this to its own limit.
constexpr int kSendBuffer = 1'048'576;
constexpr std::uint32_t kBusyPauseMs = 10;
// Each attempt can be spoilt only by another server that leaves at that moment.
constexpr int kClaimAttempts = 100;
// A lock that is held may be in the hands of somebody who removes it, which takes no time.
constexpr int kHeldAttempts = 5;
constexpr std::chrono::milliseconds kHeldPause(2);

std::uint32_t ErrorCode(int error) {
  switch (error) {
    case ENOENT:
      return kFileNotFound;
    case EMFILE:
    case ENFILE:
      return kTooManyOpenFiles;
    case EACCES:
    case EPERM:
      return kAccessDenied;
    case ENOMEM:
    case ENOBUFS:
      return kNotEnoughMemory;
    case EPIPE:
    case ECONNRESET:
      return kBrokenPipe;
    case ENOSPC:
      return kDiskFull;
    case ENAMETOOLONG:
      return kInvalidName;
    default:
      return kGeneralFailure;
  }
}

// Where a name is served.
struct Place {
  std::string folder;
  std::string socket;
  std::string lock;
  sockaddr_un address{};
};

std::uint32_t FindPlace(const std::string& name, Place& place) {
  if (name.empty() || !IsBarePipeName(name)) return kInvalidName;
  place = {};  // What a longer name left in the address would lead elsewhere.
  place.folder = PrivateFolder();
  place.socket = place.folder + "/" + name + ".sock";
  place.lock = place.folder + "/" + name + ".lock";
  if (place.socket.size() >= sizeof place.address.sun_path) return kInvalidName;
  place.address.sun_family = AF_UNIX;
  place.socket.copy(place.address.sun_path, place.socket.size());
  return kNoError;
}

std::uint32_t CheckFolder(const std::string& folder) {
  return CheckPrivateFolder(folder) == 0 ? kNoError : ErrorCode(errno);
}

bool PeerIsTrusted(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
         (peer.uid == geteuid() || peer.uid == 0);
}

struct flock WholeFile() {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return lock;
}

// Whether a server holds the name; `if_unknown` where the system doesn't tell. Asks without taking
// the lock, so that a client never stands in a server's way.
bool IsServed(const Place& place, bool if_unknown) {
  const Descriptor file(RetryOnInterrupt(
      [&] { return open(place.lock.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
  if (!file.Valid()) return errno != ENOENT && if_unknown;
  struct flock lock = WholeFile();
  if (fcntl(file.Get(), F_OFD_GETLK, &lock) != 0) return if_unknown;
  return lock.l_type != F_UNLCK;
}

// Whether the file that was opened is still the one at its path.
bool IsAt(const Descriptor& file, const std::string& path) {
  struct stat opened {};
  struct stat present {};
  return fstat(file.Get(), &opened) == 0 && lstat(path.c_str(), &present) == 0 &&
         opened.st_dev == present.st_dev && opened.st_ino == present.st_ino;
}

bool TakeLock(const Descriptor& file) {
  struct flock lock = WholeFile();
  return RetryOnInterrupt([&] { return fcntl(file.Get(), F_OFD_SETLK, &lock); }) == 0;
}

Descriptor OpenLock(const std::string& path, int more_flags = 0) {
  return Descriptor(RetryOnInterrupt([&] {
    return open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | more_flags, 0600);
  }));
}

// Both files go before the lock, and only if they are still those of its holder.
void RemoveFiles(const Descriptor& lock, const std::string& lock_path,
                 const std::string& socket_path) {
  if (!lock.Valid() || !IsAt(lock, lock_path)) return;
  unlink(socket_path.c_str());
  unlink(lock_path.c_str());
}

// Removes what servers that were killed have left in the folder.
void Sweep(const std::string& folder) {
  std::error_code failure;
  std::filesystem::directory_iterator entry(folder, failure);
  for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
    std::filesystem::path path = entry->path();
    if (path.extension() != ".lock") continue;
    const Descriptor file = OpenLock(path);
    const std::string lock_path = path;
    if (file.Valid() && TakeLock(file))
      RemoveFiles(file, lock_path, path.replace_extension(".sock"));
  }
}

// Takes the lock of a name. The lock belongs to the open file and not to the process: it doesn't go
// when some other descriptor of the same file is closed, and it also holds between two servers in
// one process.
std::uint32_t Claim(const Place& place, Descriptor& claim, Descriptor& folder) {
  if (MakePrivateFolder(place.folder.c_str()) == -1 && errno != EEXIST) return ErrorCode(errno);
  if (const std::uint32_t code = CheckFolder(place.folder); code != kNoError) return code;
  // A system without such locks has no such cleaners, so a failure is nobody's loss.
  folder = Descriptor(open(place.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.Valid()) flock(folder.Get(), LOCK_SH | LOCK_NB);
  Sweep(place.folder);
  int held = 0;
  for (int attempt = 0; attempt < kClaimAttempts; ++attempt) {
    Descriptor file = OpenLock(place.lock, O_CREAT);
    if (!file.Valid()) return ErrorCode(errno);
    if (!TakeLock(file)) {
      if (errno != EAGAIN) return ErrorCode(errno);
      if (++held == kHeldAttempts) return kAccessDenied;
      std::this_thread::sleep_for(kHeldPause);
      continue;
    }
    // A server that leaves removes its file, perhaps between our opening and locking of it.
    if (IsAt(file, place.lock)) {
      fchmod(file.Get(), 0600);  // Under a strict umask nobody could ask for the lock.
      claim = std::move(file);
      return kNoError;
    }
  }
  return kAccessDenied;
}

Descriptor NewSocket() {
  return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

// The default will do as well if this fails.
void EnlargeSendBuffer(const Descriptor& socket) {
  setsockopt(socket.Get(), SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof kSendBuffer);
}

bool WaitReadable(const Descriptor& socket, std::uint32_t wait_ms) {
  pollfd wait{socket.Get(), POLLIN, 0};
  return RetryOnInterrupt([&] { return poll(&wait, 1, static_cast<int>(wait_ms)); }) > 0;
}

}  // namespace

struct PipeEnd::Native {
  // Sends what the socket takes of `rest`. False when the connection is broken.
  bool SendSome();

  Descriptor socket;  // The connection, or the listener of an instance without a client.
  std::unique_ptr<char[]> buffer;
  std::size_t buffer_size = 0;
  std::size_t read_limit = 0;
  std::string_view rest;  // Of the write in flight.
  std::size_t taken = 0;
};

bool PipeEnd::Native::SendSome() {
  const ssize_t count = RetryOnInterrupt(
      [&] { return send(socket.Get(), rest.data(), rest.size(), MSG_NOSIGNAL | MSG_DONTWAIT); });
  if (count == -1) return errno == EAGAIN || errno == ENOBUFS || errno == ENOMEM;
  taken = static_cast<std::size_t>(count);
  return true;
}

PipeEnd::PipeEnd() : native(std::make_unique<Native>()) {}
PipeEnd::~PipeEnd() = default;

bool PipeEnd::Valid() const {
  return native->socket.Valid();
}

void PipeEnd::AddTo(WaitSources& sources) const {
  if (Valid() && !HasOnlyUrgentByte(native->socket.Get())) sources.push_back(native->socket.Get());
}

bool PipeEnd::Peek(std::size_t& available) {
  // Only a read tells the end of the stream from nothing there. An urgent byte, which no read ever
  // brings, is counted by FIONREAD, so what that says alone isn't enough either.
  available = 0;
  char byte = 0;
  const ssize_t peeked = RetryOnInterrupt(
      [&] { return recv(native->socket.Get(), &byte, 1, MSG_PEEK | MSG_DONTWAIT); });
  if (peeked == -1) return errno == EAGAIN;
  if (peeked == 0) return false;
  int count = 0;
  if (ioctl(native->socket.Get(), FIONREAD, &count) == -1) count = 1;
  available = static_cast<std::size_t>(std::max(count, 1));
  return true;
}

bool PipeEnd::StartRead(std::size_t limit) {
  if (limit > native->buffer_size) {
    native->buffer = std::make_unique_for_overwrite<char[]>(limit);
    native->buffer_size = limit;
  }
  native->read_limit = limit;
  return true;
}

Progress PipeEnd::FinishRead(std::string_view& bytes, std::uint32_t wait_ms) {
  const auto read = [&] {
    return RetryOnInterrupt([&] {
      return recv(native->socket.Get(), native->buffer.get(), native->read_limit, MSG_DONTWAIT);
    });
  };
  ssize_t count = read();
  if (count == -1 && errno == EAGAIN && wait_ms > 0 && WaitReadable(native->socket, wait_ms))
    count = read();
  if (count == -1 && errno == EAGAIN) return Progress::Pending;
  if (count <= 0) return Progress::Failed;
  bytes = std::string_view(native->buffer.get(), static_cast<std::size_t>(count));
  return Progress::Done;
}

bool PipeEnd::StartWrite(std::string_view bytes) {
  native->rest = bytes;
  native->taken = 0;
  return native->SendSome();
}

Progress PipeEnd::FinishWrite(std::size_t& count) {
  if (native->taken == 0 && !native->SendSome()) return Progress::Failed;
  count = native->taken;
  return count > 0 ? Progress::Done : Progress::Pending;
}

Progress PipeEnd::FinishAccept() {
  if (!WaitReadable(native->socket, 0)) return Progress::Pending;
  // First nobody else may come in, since accepting makes room for one more.
  shutdown(native->socket.Get(), SHUT_RDWR);
  Descriptor client(RetryOnInterrupt([&] {
    return accept4(native->socket.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
  }));
  native->socket.Reset();
  if (!client.Valid() || !PeerIsTrusted(client.Get())) return Progress::Failed;
  EnlargeSendBuffer(client);
  native->socket = std::move(client);
  return Progress::Done;
}

void PipeEnd::Disconnect() {
  if (Valid()) shutdown(native->socket.Get(), SHUT_RDWR);
}

void PipeEnd::Close() {
  native->socket.Reset();
}

std::uint32_t OpenPipe(const std::string& name, PipeEnd& end) {
  end.Close();
  Place place;
  if (const std::uint32_t code = FindPlace(name, place); code != kNoError) return code;
  if (const std::uint32_t code = CheckFolder(place.folder); code != kNoError) return code;
  Descriptor socket = NewSocket();
  if (!socket.Valid()) return ErrorCode(errno);
  const auto* address = reinterpret_cast<const sockaddr*>(&place.address);
  if (RetryOnInterrupt([&] { return connect(socket.Get(), address, sizeof place.address); }) ==
      -1) {
    switch (errno) {
      case EAGAIN:
        return kPipeBusy;
      case ECONNREFUSED:
      case ENOENT:
        return IsServed(place, false) ? kPipeBusy : kFileNotFound;
      default:
        return ErrorCode(errno);
    }
  }
  if (!PeerIsTrusted(socket.Get())) return kAccessDenied;
  EnlargeSendBuffer(socket);
  end.native->socket = std::move(socket);
  return kNoError;
}

bool PipeIsServed(const std::string& name) {
  Place place;
  return FindPlace(name, place) == kNoError && IsServed(place, true);
}

void WaitForInstance(const std::string& /*name*/, std::uint32_t wait_ms) {
  std::this_thread::sleep_for(std::chrono::milliseconds(std::min(wait_ms, kBusyPauseMs)));
}

struct PipeService::Native {
  Place place;
  Descriptor claim;
  Descriptor folder;
};

PipeService::PipeService() : native(std::make_unique<Native>()) {}
PipeService::~PipeService() {
  Release();
}

// The private folder is the access list.
bool PipeService::Prepare() {
  return true;
}

std::uint32_t PipeService::Create(const std::string& name, bool first, int /*max_instances*/,
                                  PipeEnd& end) {
  if (first) {
    Release();
    if (const std::uint32_t code = FindPlace(name, native->place); code != kNoError) return code;
    if (const std::uint32_t code = Claim(native->place, native->claim, native->folder);
        code != kNoError)
      return code;
  }
  const char* path = native->place.address.sun_path;
  Descriptor socket = NewSocket();
  if (!socket.Valid() || (unlink(path) == -1 && errno != ENOENT)) return ErrorCode(errno);
  const auto* address = reinterpret_cast<const sockaddr*>(&native->place.address);
  if (bind(socket.Get(), address, sizeof native->place.address) == -1 || chmod(path, 0600) == -1 ||
      listen(socket.Get(), 0) == -1)
    return ErrorCode(errno);
  end.native->socket = std::move(socket);
  return kNoError;
}

std::uint32_t PipeService::Listen(PipeEnd& /*end*/, bool& connected) {
  connected = false;  // FinishAccept finds a client that is there already.
  return kNoError;
}

void PipeService::Release() {
  RemoveFiles(native->claim, native->place.lock, native->place.socket);
  native->claim.Reset();
  native->folder.Reset();
}

}  // namespace zorvik::core::platform
