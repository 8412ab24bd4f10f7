#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zorvik::tests {

// How long a test waits for what must come. Far more than anything takes, so that only a fault, and
// no busy machine, uses it up.
inline constexpr std::chrono::seconds kPatience{60};

// How to start a program. It gets the environment of this process.
struct ProgramStart {
  enum class Input : std::uint8_t {
    Pipe,
    SocketPair,  // Standard output too. Windows has none: a pipe takes its place.
    File,
    Null,
    Closed,
  };

  std::string program{};  // Its bare name; it lies in the folder of the test program.
  std::vector<std::string> arguments{};
  Input input = Input::Pipe;
  std::filesystem::path input_file{};  // For Input::File.
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

  std::uint32_t Id() const;

  // Blocks until all is taken; false when nobody reads any more.
  bool Write(std::string_view bytes);
  void CloseInput();
  void CloseOutput();
  // The next line of standard output without its line feed; nothing at its end.
  std::optional<std::string> ReadLine();
  // All that is left of standard output up to its end.
  std::string ReadToEnd();

  // Waits for the end and gives the exit code, or the negative number of the signal that ended it.
  int Wait();
  bool Running();
  void Kill();

 private:
  struct Impl;

  // Appends what has come to `bytes`, waiting for it up to kPatience; false at the end of output.
  bool ReadSome(std::string& bytes);

  std::unique_ptr<Impl> impl;
  std::deque<std::string> lines;
  std::string rest;  // Output behind the last line feed.
};

}  // namespace zorvik::tests
