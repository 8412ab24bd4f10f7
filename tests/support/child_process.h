#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/byte_pipe.h"

namespace zorvik::tests {

// How long a test waits for what must come. Far more than anything takes, so that only a fault, and
// no busy machine, uses it up.
inline constexpr std::chrono::seconds kPatience{60};

// How to start a program. It gets the environment of this process.
struct ProgramStart {
  std::string program{};  // Its bare name; it lies in the folder of the test program.
  std::vector<std::string> arguments{};
  BytePipe::Kind streams = BytePipe::Kind::Pipe;
  // Takes the place of the pipe to standard input; an empty path: the program gets no input at all.
  std::optional<std::filesystem::path> input_file{};
  std::filesystem::path error_file{};  // Where standard error goes; empty: where ours goes.
  bool non_blocking_output = false;    // POSIX alone has such pipes.
};

// A running program whose standard streams the test holds. Everything that takes longer than
// kPatience throws.
class ChildProcess {
 public:
  explicit ChildProcess(const ProgramStart& start);
  // Ends the program hard if it still runs.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  std::uint32_t Id() const { return id; }

  // Blocks until all is taken; false when nobody reads any more.
  bool Write(std::string_view bytes);
  void CloseInput() { input.CloseWriter(); }
  void CloseOutput() { output.CloseReader(); }
  // The next line of standard output without its line feed; nothing at its end.
  std::optional<std::string> ReadLine();
  // All that is left of standard output up to its end.
  std::string ReadToEnd();

  // Waits for the end and gives the exit code, or the negative number of the signal that ended it.
  int Wait();
  void Kill();

 private:
  // Starts the program on the far ends of the pipes.
  void Spawn(const ProgramStart& start);
  // Notes the end of the program, if it has come.
  bool Running();
  // Appends what has come to `bytes`, waiting for it; false at the end of output.
  bool ReadSome(std::string& bytes);

  std::uint32_t id = 0;
  OwnedHandle process;  // Windows alone.
  std::optional<int> exit_code;
  BytePipe input;
  BytePipe output;
  std::string rest;  // Output that was read and not yet asked for.
};

}  // namespace zorvik::tests
