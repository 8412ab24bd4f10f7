#include "tests/faulty_editor/raw_pipe.h"

#include <stdexcept>
#include <utility>

#include "core/platform/error_codes.h"
#include "core/process.h"

namespace zorvik::tests {

using core::platform::Progress;

namespace {

constexpr std::size_t kReadLimit = 65'536;

}  // namespace

RawPipe::RawPipe(std::string pipe_name) : name(std::move(pipe_name)) {
  service.Prepare();
  Listen();
}

void RawPipe::Listen() {
  // The end that was used stays until the new one waits, so that clients find the name all along.
  auto fresh = std::make_unique<core::platform::PipeEnd>();
  if (service.Create(name, end == nullptr, 2, *fresh) != core::platform::kNoError ||
      service.Listen(*fresh, connected) != core::platform::kNoError)
    throw std::runtime_error("the pipe doesn't open: " + name);
  end = std::move(fresh);
  incoming.Clear();
  reading = false;
  ++connection;
}

void RawPipe::Poll(core::Lines& lines) {
  if (!connected) {
    const Progress progress = end->FinishAccept();
    if (progress == Progress::Failed) Listen();
    connected = connected || progress == Progress::Done;
  }
  while (connected) {
    if (!reading && !end->StartRead(kReadLimit)) return Listen();
    reading = true;
    std::string_view bytes;
    const Progress progress = end->FinishRead(bytes, 0);
    if (progress == Progress::Pending) return;
    if (progress == Progress::Failed) return Listen();
    reading = false;
    incoming.Append(bytes);
    core::TakeLines(incoming, lines);
  }
}

void RawPipe::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    if (!connected || !end->StartWrite(bytes)) return;
    std::size_t count = 0;
    Progress progress = end->FinishWrite(count);
    for (; progress == Progress::Pending; progress = end->FinishWrite(count))
      core::SleepMilliseconds(1);
    if (progress == Progress::Failed) return;  // The next read finds the end.
    bytes.remove_prefix(count);
  }
}

}  // namespace zorvik::tests
