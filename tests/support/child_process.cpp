#include "tests/support/child_process.h"

#include <stdexcept>
#include <utility>

#include "core/process.h"

namespace zorvik::tests {
namespace {

// Asks again and again until `done`, at once when one of `sources` has something.
template <typename Condition>
void Await(Condition done, const char* failure, const core::platform::WaitSources& sources = {}) {
  const auto limit = std::chrono::steady_clock::now() + kPatience;
  while (!done()) {
    if (std::chrono::steady_clock::now() > limit) throw std::runtime_error(failure);
    core::platform::WaitForInput(sources, 1);
  }
}

}  // namespace

ChildProcess::ChildProcess(const ProgramStart& start)
    : input(start.streams), output(start.streams) {
  Spawn(start);
  input.CloseReader();
  output.CloseWriter();
}

ChildProcess::~ChildProcess() {
  Kill();
  while (Running()) core::SleepMilliseconds(1);
}

bool ChildProcess::Write(std::string_view bytes) {
  std::size_t count = 0;
  while (!bytes.empty()) {
    if (!input.Writer().Write(bytes.data(), bytes.size(), count)) return false;
    bytes.remove_prefix(count);
  }
  return true;
}

bool ChildProcess::ReadSome(std::string& bytes) {
  const core::platform::InputStream stream = output.Reader();
  std::size_t count = 0;
  bool open = true;
  core::platform::WaitSources sources;
  stream.AddTo(sources);
  Await([&] { return !(open = stream.Peek(count)) || count > 0; }, "no output", sources);
  const std::size_t before = bytes.size();
  bytes.resize(before + count);
  return open && stream.Read(bytes.data() + before, count, count);
}

std::optional<std::string> ChildProcess::ReadLine() {
  std::size_t end = rest.find('\n');
  while (end == std::string::npos) {
    const std::size_t scanned = rest.size();
    if (!ReadSome(rest)) return std::nullopt;
    end = rest.find('\n', scanned);
  }
  std::string line = rest.substr(0, end);
  rest.erase(0, end + 1);
  return line;
}

std::string ChildProcess::ReadToEnd() {
  while (ReadSome(rest)) {
  }
  return std::exchange(rest, {});
}

int ChildProcess::Wait() {
  Await([this] { return !Running(); }, "the program doesn't end");
  return *exit_code;
}

}  // namespace zorvik::tests
