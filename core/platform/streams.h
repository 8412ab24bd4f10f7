#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/platform/wait.h"

namespace zorvik::core::platform {

// Puts the standard streams of the process in order. main() calls it before anything else, so that
// no file opened later can take the place of a standard stream that the process was started
// without. From then on what is written to standard output and standard error through stdio keeps
// its line feeds as they are, and a write to a stream that nobody reads any more, or to a file that
// has reached the system's limit, fails instead of ending the process.
void PrepareStandardStreams();

// Writes a line with its line feed to standard error, or as much of it as is taken. POSIX never
// waits for a reader: what doesn't fit is dropped. Windows can't tell, and waits.
void WriteStandardError(std::string_view line);

// A byte stream that is read without buffering. The object is a borrowed handle: it neither opens
// nor closes anything and may be copied.
class InputStream {
 public:
  // No stream at all.
  InputStream() = default;
  // The standard input of this process, or no stream if it has none.
  static InputStream Standard();
  // The same, except that a terminal can be peeked too, so that a program can serve others while
  // it waits for the keyboard. A terminal that another program has in hand, as when this one was
  // started in the background, stays open and brings nothing. Only for one call in a process.
  static InputStream StandardWithTerminal();
  // A descriptor (POSIX) or handle (Windows) of the caller's.
  static InputStream Borrow(std::intptr_t handle);

  bool Valid() const;
  // Whether Peek can tell how much is there: true for pipes and sockets, false for files, devices
  // and, but for StandardWithTerminal, terminals.
  bool CanPeek() const { return can_peek; }
  // Only where CanPeek. Puts the number of bytes that can be read without blocking into `available`
  // (0: nothing yet). False once the writing end has gone and nothing is left. Never blocks.
  bool Peek(std::size_t& available) const;
  // Only where Peek found nothing, and only where a pause can't be ended by the stream: waits a
  // moment, far below a millisecond, for more or for the end. False when neither came, and at once
  // where WaitForInput does better.
  bool WaitForMore() const;
  // Reads at most `limit` bytes and reports how many in `count`. Blocks while there are none.
  // False, or a count of 0, is the end of the input.
  bool Read(char* bytes, std::size_t limit, std::size_t& count) const;
  // Lets the stream end a pause.
  void AddTo(WaitSources& sources) const;

 private:
  std::intptr_t native = -1;
  bool can_peek = false;
  bool is_socket = false;    // POSIX alone has such streams.
  bool is_terminal = false;  // One that can be peeked; POSIX alone has such streams.
};

// A byte stream that is written without buffering; a borrowed handle like InputStream.
class OutputStream {
 public:
  OutputStream() = default;
  // The standard output of this process, or no stream if it has none.
  static OutputStream Standard();
  static OutputStream Borrow(std::intptr_t handle);

  bool Valid() const;
  // Writes some of the bytes, at least one, and reports how many in `count`. Blocks while the
  // reader doesn't drain the stream, even if the stream was set not to. False when it is broken.
  bool Write(const char* bytes, std::size_t size, std::size_t& count) const;

 private:
  std::intptr_t native = -1;
};

}  // namespace zorvik::core::platform
