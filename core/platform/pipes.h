#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/platform/wait.h"

// Local pipes: the byte streams between a server and the editors of the same user on one machine.
// Windows: named pipes. POSIX: Unix-domain stream sockets in a private folder.
//
// Nothing here blocks but WaitForInstance, FinishRead with a time, and the cancelling in Disconnect
// and Close.
// Failures are the numbers of core/platform/error_codes.h.
namespace zorvik::core::platform {

// How an operation that was started stands now.
enum class Progress : std::uint8_t { Pending, Done, Failed };

// One end of one pipe instance: a client's connection, or an instance that a server made and on
// which it waits for a client, or serves one. At most one read and one write are in flight at once.
class PipeEnd {
 public:
  PipeEnd();
  // As Close.
  ~PipeEnd();
  PipeEnd(const PipeEnd&) = delete;
  PipeEnd& operator=(const PipeEnd&) = delete;

  bool Valid() const;

  // Puts the number of bytes that can be read now into `available`. False once the peer has gone
  // and nothing is left to read.
  bool Peek(std::size_t& available);

  // Starts reading at most `limit` bytes into a buffer that this end owns. False: the pipe failed.
  bool StartRead(std::size_t limit);
  // Waits up to `wait_ms` for the read that was started. Done: `bytes` shows what was read, valid
  // until the next StartRead or Close.
  Progress FinishRead(std::string_view& bytes, std::uint32_t wait_ms);

  // Starts writing. `bytes` must stay in place and unchanged until FinishWrite says Done or Failed,
  // or the end is closed. False: the pipe failed.
  bool StartWrite(std::string_view bytes);
  // Done: `count` bytes of what StartWrite was given have been taken, which may be fewer than all.
  Progress FinishWrite(std::size_t& count);

  // Whether a client has come to an instance that PipeService::Create made. Done at most once.
  Progress FinishAccept();

  // Lets this end's pipe end a pause when bytes come, the peer goes, or a client connects.
  void AddTo(WaitSources& sources) const;

  // Cancels what is in flight and cuts the peer off: it can count on nothing that it hasn't read
  // yet. The end stays to be closed.
  void Disconnect();
  // Cancels what is in flight, waits until the buffers are free again, and closes. What was written
  // before can still be read by the peer. Safe in any state.
  void Close();

 private:
  friend class PipeService;
  friend std::uint32_t OpenPipe(const std::string& name, PipeEnd& end);
  struct Native;
  std::unique_ptr<Native> native;
};

// Connects `end`, closing it first, to the server of `name`, a bare UTF-8 name. Returns kNoError;
// kFileNotFound when nobody serves the name; kPipeBusy when its server has no free instance now;
// kAccessDenied when the place or the peer belongs to another user; kInvalidName; or another code.
std::uint32_t OpenPipe(const std::string& name, PipeEnd& end);

// Whether somebody serves `name`, if only a process that this one can't see. Errs on the side of
// yes: false only where it is certain. Takes no instance away from a client.
bool PipeIsServed(const std::string& name);

// Waits up to `wait_ms` for an instance of `name` to become free. May return early for no reason.
void WaitForInstance(const std::string& name, std::uint32_t wait_ms);

// What a server holds for a name beside its instances: the access list, and the claim on the name.
class PipeService {
 public:
  PipeService();
  // As Release.
  ~PipeService();
  PipeService(const PipeService&) = delete;
  PipeService& operator=(const PipeService&) = delete;

  // Makes the access list that lets in the system (root) and this user and nobody else. To be
  // called before the first Create of each name. False: it can't be made.
  bool Prepare();
  // Makes one more instance of `name`, to which one client can connect, ready for Listen. `first`
  // claims the name: it fails with kAccessDenied while another process (or object) serves it.
  // `max_instances` is the most that will exist at once. Returns kNoError or a code.
  std::uint32_t Create(const std::string& name, bool first, int max_instances, PipeEnd& end);
  // Starts waiting for a client on a created instance. `connected` tells that one is there already.
  std::uint32_t Listen(PipeEnd& end, bool& connected);
  // Gives up the name, which another process may then serve, once its instances are closed too.
  // Safe in any state.
  void Release();

 private:
  struct Native;
  std::unique_ptr<Native> native;
};

}  // namespace zorvik::core::platform
