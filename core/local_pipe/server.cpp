#include "core/local_pipe/server.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "core/local_pipe/lines.h"
#include "core/local_pipe/outgoing_lines.h"
#include "core/local_pipe/system_message.h"
#include "core/platform/error_codes.h"
#include "core/platform/pipes.h"

namespace zorvik::core {
namespace {

// Starting a read and collecting it take a pass each.
constexpr int kReadPassesPerPoll = 64;
constexpr std::size_t kReadLimit = 65'536;

// One pipe instance: it waits for a client, or serves one.
struct Instance {
  Instance() = default;
  Instance(const Instance&) = delete;
  Instance& operator=(const Instance&) = delete;
  // A dropped client may still read what was written for it; any other is cut off.
  ~Instance() {
    if (connected && !dropped) end.Disconnect();
  }

  std::int32_t id = 0;
  bool connected = false;
  bool reading = false;
  bool dropped = false;
  OutgoingLines outgoing;
  LineBuffer incoming;
  platform::PipeEnd end;  // Goes first, since it may be writing from `outgoing`.
};

// Each stage answers false when the connection has failed.
bool AcceptStage(Instance& instance) {
  if (instance.connected) return true;
  const platform::Progress progress = instance.end.FinishAccept();
  instance.connected = progress == platform::Progress::Done;
  return progress != platform::Progress::Failed;
}

bool ReadStage(Instance& instance, std::vector<LocalPipeServer::Message>& messages) {
  for (int pass = 0; pass < kReadPassesPerPoll; ++pass) {
    if (!instance.reading) {
      if (!instance.end.StartRead(kReadLimit)) return false;
      instance.reading = true;
      continue;
    }
    std::string_view bytes;
    const platform::Progress progress = instance.end.FinishRead(bytes, 0);
    if (progress != platform::Progress::Done) return progress == platform::Progress::Pending;
    instance.reading = false;
    instance.incoming.Append(bytes);
    Lines lines;
    if (!TakeLines(instance.incoming, lines)) return false;
    if (!instance.dropped)
      for (std::string& line : lines) messages.push_back({instance.id, std::move(line)});
  }
  return true;
}

}  // namespace

struct LocalPipeServer::Impl {
  bool Listen(std::string& error);
  void TopUp();
  void Close();
  Instance* Find(std::int32_t id);

  std::string name;
  platform::PipeService service;
  std::vector<std::unique_ptr<Instance>> instances;
  std::int32_t limit = 4;
  std::int32_t next_id = 1;
  bool open = false;
  bool first = true;
};

// Adds an instance that waits for a client.
bool LocalPipeServer::Impl::Listen(std::string& error) {
  auto instance = std::make_unique<Instance>();
  // While `limit` clients are on, the one more that the system allows stays unused.
  const std::int32_t most = limit < std::numeric_limits<std::int32_t>::max() ? limit + 1 : limit;
  std::uint32_t code = service.Create(name, first, most, instance->end);
  if (code != platform::kNoError) {
    error = "o pipe " + name + " nao abriu (" + SystemMessage(code) + ")";
    return false;
  }
  first = false;
  instance->id = next_id++;
  code = service.Listen(instance->end, instance->connected);
  if (code != platform::kNoError) {
    error = "o pipe " + name + " nao aceita conexao (" + SystemMessage(code) + ")";
    return false;
  }
  instances.push_back(std::move(instance));
  return true;
}

// Makes sure that one instance waits for a client, unless `limit` clients are served.
void LocalPipeServer::Impl::TopUp() {
  std::int32_t connected = 0;
  for (const auto& instance : instances) {
    if (!instance->connected) return;
    ++connected;
  }
  if (connected < limit) {
    std::string ignored;  // The next Poll tries again.
    Listen(ignored);
  }
}

void LocalPipeServer::Impl::Close() {
  instances.clear();
  service.Release();
  open = false;
}

Instance* LocalPipeServer::Impl::Find(std::int32_t id) {
  const auto found = std::find_if(instances.begin(), instances.end(),
                                  [id](const auto& instance) { return instance->id == id; });
  return found == instances.end() ? nullptr : found->get();
}

LocalPipeServer::LocalPipeServer() : impl(std::make_unique<Impl>()) {}
LocalPipeServer::~LocalPipeServer() = default;

bool LocalPipeServer::Open(const std::string& name, std::string& error, std::int32_t limit) {
  impl->Close();
  impl->name = name;
  impl->first = true;
  impl->limit = std::max<std::int32_t>(limit, 1);
  if (!impl->service.Prepare()) {
    error = "nao foi possivel montar a permissao do pipe";
    return false;
  }
  if (!impl->Listen(error)) {
    impl->Close();
    return false;
  }
  impl->open = true;
  return true;
}

bool LocalPipeServer::IsOpen() const {
  return impl->open;
}

const std::string& LocalPipeServer::Name() const {
  return impl->name;
}

std::size_t LocalPipeServer::Connections() const {
  return static_cast<std::size_t>(std::count_if(
      impl->instances.begin(), impl->instances.end(),
      [](const auto& instance) { return instance->connected; }));
}

void LocalPipeServer::Poll(std::vector<Message>& messages, std::vector<std::int32_t>& closed) {
  if (!impl->open) return;
  // What has ended goes only when another instance waits, so that the name is there all along.
  std::vector<std::unique_ptr<Instance>> gone;
  for (std::size_t index = 0; index < impl->instances.size();) {
    Instance& instance = *impl->instances[index];
    bool well = AcceptStage(instance);
    if (well && instance.connected)
      well = ReadStage(instance, messages) && instance.outgoing.Pump(instance.end);
    if (!well && instance.connected) closed.push_back(instance.id);
    if (!well || (instance.dropped && instance.outgoing.Idle())) {
      gone.push_back(std::move(impl->instances[index]));
      impl->instances.erase(impl->instances.begin() + static_cast<std::ptrdiff_t>(index));
    } else {
      ++index;
    }
  }
  impl->TopUp();
}

bool LocalPipeServer::Send(std::int32_t connection, std::string line) {
  Instance* instance = impl->Find(connection);
  if (instance == nullptr || !instance->connected || instance->dropped) return false;
  instance->outgoing.Push(std::move(line));
  return true;
}

void LocalPipeServer::Drop(std::int32_t connection) {
  if (Instance* instance = impl->Find(connection)) instance->dropped = true;
}

void LocalPipeServer::Close() {
  impl->Close();
}

}  // namespace zorvik::core
