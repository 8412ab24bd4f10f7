#include "core/platform/pipes.h"

#include <windows.h>

#include <sddl.h>

#include <string>
#include <utility>
#include <vector>

#include "core/platform/error_codes.h"
#include "core/platform/pipe_names.h"
#include "core/platform/windows.h"

namespace zorvik::core::platform {
namespace {

constexpr DWORD kPipeBuffer = 65'536;

// One overlapped operation, used again and again. While it is pending, the system owns its record
// and the memory that it reads or writes.
struct Operation {
  Operation() { overlapped.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr); }
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;
  ~Operation() {
    if (overlapped.hEvent != nullptr) CloseHandle(overlapped.hEvent);
  }

  // Without its event nothing could be waited for, so nothing may be started.
  bool Reset() { return overlapped.hEvent != nullptr && ResetEvent(overlapped.hEvent); }

  // Notes what the call that starts the operation has answered. One that is done at once is
  // collected in the same way as any other.
  bool Started(BOOL answer) {
    pending = answer || GetLastError() == ERROR_IO_PENDING;
    return pending;
  }

  Progress Collect(HANDLE file, DWORD& count) {
    if (!pending) return Progress::Failed;
    if (GetOverlappedResult(file, &overlapped, &count, FALSE)) {
      pending = false;
      return Progress::Done;
    }
    if (GetLastError() == ERROR_IO_INCOMPLETE) return Progress::Pending;
    pending = false;
    return Progress::Failed;
  }

  // Waits until the system has let go of an operation that was cancelled.
  void AwaitEnd(HANDLE file) {
    if (pending) {
      DWORD count = 0;
      GetOverlappedResult(file, &overlapped, &count, TRUE);
      pending = false;
    }
  }

  OVERLAPPED overlapped{};
  bool pending = false;
};

std::wstring PipePath(const std::string& name) {
  return L"\\\\.\\pipe\\" + WideText(name);
}

// The security identifier of this process's user as text; empty when it can't be told.
std::wstring UserIdentifier() {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) return {};
  const Handle token(opened);
  DWORD size = 0;
  GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &size);
  std::vector<unsigned char> user(size);
  if (size < sizeof(TOKEN_USER) ||
      !GetTokenInformation(token.Get(), TokenUser, user.data(), size, &size))
    return {};
  wchar_t* text = nullptr;
  if (!ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, &text))
    return {};
  std::wstring identifier = text;
  LocalFree(text);
  return identifier;
}

}  // namespace

struct PipeEnd::Native {
  // Ends what is in flight, and waits until the buffers are free again.
  void Cancel();

  Handle file;
  Operation read;
  Operation write;
  std::unique_ptr<Operation> accept;  // Only for an instance of a server.
  std::unique_ptr<char[]> buffer;
  std::size_t buffer_size = 0;
};

void PipeEnd::Native::Cancel() {
  CancelIoEx(file.Get(), nullptr);
  if (accept) accept->AwaitEnd(file.Get());
  read.AwaitEnd(file.Get());
  write.AwaitEnd(file.Get());
}

PipeEnd::PipeEnd() : native(std::make_unique<Native>()) {}
PipeEnd::~PipeEnd() {
  Close();
}

bool PipeEnd::Valid() const {
  return native->file.Valid();
}

void PipeEnd::AddTo(WaitSources&) const {}

bool PipeEnd::Peek(std::size_t& available) {
  DWORD count = 0;
  if (!PeekNamedPipe(native->file.Get(), nullptr, 0, nullptr, &count, nullptr)) return false;
  available = count;
  return true;
}

bool PipeEnd::StartRead(std::size_t limit) {
  if (limit > native->buffer_size) {
    native->buffer = std::make_unique_for_overwrite<char[]>(limit);
    native->buffer_size = limit;
  }
  return native->read.Reset() && native->read.Started(ReadFile(
                                     native->file.Get(), native->buffer.get(),
                                     static_cast<DWORD>(limit), nullptr, &native->read.overlapped));
}

Progress PipeEnd::FinishRead(std::string_view& bytes, std::uint32_t wait_ms) {
  if (wait_ms > 0 && native->read.pending &&
      WaitForSingleObject(native->read.overlapped.hEvent, wait_ms) != WAIT_OBJECT_0)
    return Progress::Pending;
  DWORD count = 0;
  const Progress progress = native->read.Collect(native->file.Get(), count);
  if (progress == Progress::Done) bytes = std::string_view(native->buffer.get(), count);
  return progress;
}

bool PipeEnd::StartWrite(std::string_view bytes) {
  return native->write.Reset() &&
         native->write.Started(WriteFile(native->file.Get(), bytes.data(),
                                         static_cast<DWORD>(bytes.size()), nullptr,
                                         &native->write.overlapped));
}

Progress PipeEnd::FinishWrite(std::size_t& count) {
  DWORD written = 0;
  const Progress progress = native->write.Collect(native->file.Get(), written);
  count = written;
  return progress;
}

Progress PipeEnd::FinishAccept() {
  DWORD unused = 0;
  return native->accept ? native->accept->Collect(native->file.Get(), unused) : Progress::Failed;
}

void PipeEnd::Disconnect() {
  if (Valid()) {
    native->Cancel();
    DisconnectNamedPipe(native->file.Get());
  }
}

void PipeEnd::Close() {
  if (Valid()) {
    native->Cancel();
    native->file.Reset();
  }
}

std::uint32_t OpenPipe(const std::string& name, PipeEnd& end) {
  end.Close();
  if (!IsBarePipeName(name)) return kInvalidName;
  const std::wstring path = PipePath(name);  // Kept past the call, lest freeing it lose the error.
  end.native->file = Handle(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
  return end.Valid() ? kNoError : GetLastError();
}

bool PipeIsServed(const std::string& name) {
  if (!IsBarePipeName(name)) return false;
  // The shortest time that can be asked for: 0 stands for the server's default.
  const std::wstring path = PipePath(name);  // As in OpenPipe.
  return WaitNamedPipeW(path.c_str(), 1) || GetLastError() != ERROR_FILE_NOT_FOUND;
}

void WaitForInstance(const std::string& name, std::uint32_t wait_ms) {
  WaitNamedPipeW(PipePath(name).c_str(), wait_ms);
}

struct PipeService::Native {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
};

PipeService::PipeService() : native(std::make_unique<Native>()) {}
PipeService::~PipeService() {
  Release();
}

bool PipeService::Prepare() {
  Release();
  const std::wstring user = UserIdentifier();
  const std::wstring text = L"D:P(A;;GA;;;SY)(A;;GA;;;" + user + L")";
  return !user.empty() && ConvertStringSecurityDescriptorToSecurityDescriptorW(
                              text.c_str(), SDDL_REVISION_1, &native->descriptor, nullptr);
}

std::uint32_t PipeService::Create(const std::string& name, bool first, int max_instances,
                                  PipeEnd& end) {
  end.Close();
  if (!IsBarePipeName(name)) return kInvalidName;
  SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), native->descriptor, FALSE};
  end.native->accept = std::make_unique<Operation>();
  const std::wstring path = PipePath(name);  // As in OpenPipe.
  end.native->file = Handle(CreateNamedPipeW(
      path.c_str(),
      PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | (first ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0),
      PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
      static_cast<DWORD>(max_instances), kPipeBuffer, kPipeBuffer, 0, &attributes));
  return end.Valid() ? kNoError : GetLastError();
}

std::uint32_t PipeService::Listen(PipeEnd& end, bool& connected) {
  Operation& accept = *end.native->accept;
  connected = false;
  if (!accept.Reset()) return kNotEnoughMemory;
  if (accept.Started(ConnectNamedPipe(end.native->file.Get(), &accept.overlapped))) return kNoError;
  const DWORD code = GetLastError();
  connected = code == ERROR_PIPE_CONNECTED;
  return connected ? kNoError : code;
}

void PipeService::Release() {
  // LocalFree takes null as well, and answers null when it has freed.
  native->descriptor = LocalFree(native->descriptor);
}

}  // namespace zorvik::core::platform
