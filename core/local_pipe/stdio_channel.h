#pragma once

#include <string>

#include "core/local_pipe/lines.h"
#include "core/platform/streams.h"

namespace zorvik::core {

// The line reader and writer on the process's standard streams. Reading from a stream that can be
// peeked, such as a pipe or a socket, never blocks; reading from anything else, and writing, may.
class StdioChannel {
 public:
  // Takes the standard streams of the process, which main() has put in order with
  // platform::PrepareStandardStreams. Can't fail: a missing stream shows in Poll or Write.
  StdioChannel();
  // For a channel on other streams, which stay the caller's and must outlive it.
  StdioChannel(platform::InputStream source, platform::OutputStream sink);

  StdioChannel(const StdioChannel&) = delete;
  StdioChannel& operator=(const StdioChannel&) = delete;

  // Appends the complete lines that have arrived to `lines`. Sets `closed` to whether no further
  // input will ever come; lines and `closed` can come out of the same call. Takes at most 64 reads
  // of 64 KiB. The input ends with an unfinished line beyond kLineRestLimit too; that line is
  // thrown away.
  void Poll(Lines& lines, bool& closed);

  // Lets the input end a pause.
  void AddTo(platform::WaitSources& sources) const { input.AddTo(sources); }

  // Writes `line` and a line feed, all of it, before it returns. False when the stream is missing
  // or broken; part of the line may have been written then.
  bool Write(std::string line);

 private:
  // Input has ended: what was left of an unfinished line becomes the last line.
  void End(Lines& lines);

  LineBuffer buffer;
  platform::InputStream input;
  platform::OutputStream output;
  bool ended = false;  // Never reset.
};

}  // namespace zorvik::core
