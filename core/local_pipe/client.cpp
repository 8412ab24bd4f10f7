#include "core/local_pipe/client.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "core/local_pipe/lines.h"
#include "core/local_pipe/outgoing_lines.h"
#include "core/local_pipe/system_message.h"
#include "core/platform/error_codes.h"
#include "core/platform/pipes.h"
#include "core/platform/process.h"

namespace zorvik::core {
namespace {

constexpr std::uint64_t kWriteStallMs = 30'000;
constexpr std::uint64_t kBusyWaitMs = 1'000;
constexpr std::uint32_t kReadWaitMs = 5'000;
constexpr std::size_t kReadLimit = 1'048'576;
// More than a pipe holds, so that what is there at the call comes out. An editor that never stops
// writing must not fill the memory, nor keep the thread from everybody else, and the shorter its
// lines are, the more work they make.
constexpr std::size_t kBytesPerReceive = 4'194'304;
constexpr std::size_t kLinesPerReceive = 262'144;

constexpr const char* kNotConnected = "sem conexao com o editor";
constexpr const char* kConnectionLost = "a conexao com o editor caiu";

}  // namespace

struct LocalPipeClient::Impl {
  explicit Impl(TickClock tick_clock)
      : clock(std::move(tick_clock)), outgoing(clock, kWriteStallMs) {}

  void Close() {
    end.Close();
    outgoing.Clear();
    incoming.Clear();
  }

  // Closes, and leaves the reason in `error`.
  bool Fail(const char* reason, std::string& error) {
    Close();
    error = reason;
    return false;
  }

  TickClock clock;
  OutgoingLines outgoing;
  LineBuffer incoming;
  platform::PipeEnd end;  // Goes first, since it may be writing from `outgoing`.
};

LocalPipeClient::LocalPipeClient() : LocalPipeClient(platform::TickMilliseconds) {}
LocalPipeClient::LocalPipeClient(TickClock clock)
    : impl(std::make_unique<Impl>(std::move(clock))) {}
LocalPipeClient::~LocalPipeClient() = default;

bool LocalPipeClient::Connect(const std::string& name, std::int32_t timeout_ms,
                              std::string& error) {
  Close();
  const std::uint64_t deadline =
      impl->clock() + static_cast<std::uint64_t>(std::max<std::int32_t>(timeout_ms, 0));
  while (true) {
    const std::uint32_t code = platform::OpenPipe(name, impl->end);
    if (code == platform::kNoError) return true;
    const std::uint64_t now = impl->clock();
    if (code == platform::kFileNotFound) {
      error = "nenhum editor escuta em " + name;
      return false;
    }
    if (code != platform::kPipeBusy || now >= deadline) {
      error = "o editor em " + name + " nao aceitou a conexao (" + SystemMessage(code) + ")";
      return false;
    }
    platform::WaitForInstance(
        name, static_cast<std::uint32_t>(std::min<std::uint64_t>(deadline - now, kBusyWaitMs)));
  }
}

bool LocalPipeClient::Connected() const {
  return impl->end.Valid();
}

void LocalPipeClient::Close() {
  impl->Close();
}

bool LocalPipeClient::Send(std::string line, std::string& error) {
  if (!Connected()) {
    error = kNotConnected;
    return false;
  }
  impl->outgoing.Push(std::move(line));
  return impl->outgoing.Pump(impl->end) || impl->Fail(kConnectionLost, error);
}

bool LocalPipeClient::Receive(Lines& lines, std::string& error) {
  if (!Connected()) {
    error = kNotConnected;
    return false;
  }
  if (!impl->outgoing.Pump(impl->end))
    return impl->Fail("o editor parou de ler o que foi mandado", error);
  const std::size_t before = lines.size();
  std::size_t taken = 0;
  while (taken < kBytesPerReceive && lines.size() - before < kLinesPerReceive) {
    std::size_t available = 0;
    if (!impl->end.Peek(available)) return impl->Fail(kConnectionLost, error);
    if (available == 0) return true;
    if (!impl->end.StartRead(std::min(available, kReadLimit)))
      return impl->Fail(kConnectionLost, error);
    // The bytes are there already, so the wait is only a guard.
    std::string_view bytes;
    if (impl->end.FinishRead(bytes, kReadWaitMs) != platform::Progress::Done)
      return impl->Fail("leitura do editor sem resposta", error);
    taken += bytes.size();
    impl->incoming.Append(bytes);
    if (!TakeLines(impl->incoming, lines))
      return impl->Fail("o editor mandou uma linha grande demais", error);
  }
  return true;
}

void LocalPipeClient::AddTo(platform::WaitSources& sources) const {
  impl->end.AddTo(sources);
}

}  // namespace zorvik::core
