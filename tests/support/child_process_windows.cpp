#include "tests/support/child_process.h"

#include <windows.h>

#include <array>
#include <stdexcept>
#include <utility>

#include "core/win32.h"

namespace zorvik::tests {
namespace {

[[noreturn]] void Fail(const char* what) {
  throw std::runtime_error(what);
}

// A handle that closes itself. Null: none.
class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE opened) : handle(opened) {}
  ~Handle() { Reset(); }
  Handle(Handle&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    Reset();
    handle = std::exchange(other.handle, nullptr);
    return *this;
  }
  HANDLE Get() const { return handle; }
  void Reset() {
    if (handle != nullptr) CloseHandle(handle);
    handle = nullptr;
  }

 private:
  HANDLE handle = nullptr;
};

struct Ends {
  Handle reader;
  Handle writer;
};

SECURITY_ATTRIBUTES Inherited() {
  return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

Ends Connect() {
  SECURITY_ATTRIBUTES inherited = Inherited();
  HANDLE reader = nullptr;
  HANDLE writer = nullptr;
  if (!CreatePipe(&reader, &writer, &inherited, 65536)) Fail("no pipe");
  return {Handle(reader), Handle(writer)};
}

// Keeps our own end of a pipe from reaching the program, which would then never see its end.
Handle Keep(Handle& end) {
  SetHandleInformation(end.Get(), HANDLE_FLAG_INHERIT, 0);
  return std::move(end);
}

Handle OpenFile(const std::filesystem::path& path, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES inherited = Inherited();
  Handle file(CreateFileW(path.c_str(), access,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                          disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (file.Get() == INVALID_HANDLE_VALUE) Fail("a file doesn't open");
  return file;
}

std::wstring Wide(const std::string& text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
}

}  // namespace

struct ChildProcess::Impl {
  Handle process;
  DWORD id = 0;
  Handle input;
  Handle output;
};

ChildProcess::ChildProcess(const ProgramStart& start) : impl(std::make_unique<Impl>()) {
  Handle input;
  switch (start.input) {
    case ProgramStart::Input::Pipe:
    case ProgramStart::Input::SocketPair: {
      Ends ends = Connect();
      input = std::move(ends.reader);
      impl->input = Keep(ends.writer);
      break;
    }
    case ProgramStart::Input::File:
      input = OpenFile(start.input_file, GENERIC_READ, OPEN_EXISTING);
      break;
    case ProgramStart::Input::Null:
      input = OpenFile(L"NUL", GENERIC_READ, OPEN_EXISTING);
      break;
    case ProgramStart::Input::Closed:
      break;
  }
  Ends output = Connect();
  impl->output = Keep(output.reader);
  Handle errors;
  if (!start.error_file.empty()) errors = OpenFile(start.error_file, GENERIC_WRITE, CREATE_ALWAYS);

  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = input.Get();
  startup.hStdOutput = output.writer.Get();
  startup.hStdError = errors.Get() != nullptr ? errors.Get() : GetStdHandle(STD_ERROR_HANDLE);

  const std::filesystem::path path =
      core::win32::ExecutablePath().parent_path() / (start.program + ".exe");
  // The tests' arguments hold no quotation marks, so that quoting each one whole is enough.
  std::wstring command = L'"' + path.wstring() + L'"';
  for (const std::string& argument : start.arguments) command += L" \"" + Wide(argument) + L'"';
  PROCESS_INFORMATION made{};
  if (!CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                      &startup, &made))
    Fail("the program doesn't start");
  CloseHandle(made.hThread);
  impl->process = Handle(made.hProcess);
  impl->id = made.dwProcessId;
}

ChildProcess::~ChildProcess() {
  Kill();
  WaitForSingleObject(impl->process.Get(), INFINITE);
}

std::uint32_t ChildProcess::Id() const {
  return impl->id;
}

bool ChildProcess::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD count = 0;
    const auto size = static_cast<DWORD>(bytes.size());
    if (!WriteFile(impl->input.Get(), bytes.data(), size, &count, nullptr)) return false;
    bytes.remove_prefix(count);
  }
  return true;
}

void ChildProcess::CloseInput() {
  impl->input.Reset();
}
void ChildProcess::CloseOutput() {
  impl->output.Reset();
}

bool ChildProcess::ReadSome(std::string& bytes) {
  const auto limit = std::chrono::steady_clock::now() + kPatience;
  DWORD available = 0;
  while (available == 0) {
    if (!PeekNamedPipe(impl->output.Get(), nullptr, 0, nullptr, &available, nullptr)) return false;
    if (available == 0) {
      if (std::chrono::steady_clock::now() > limit) Fail("no output");
      Sleep(1);
    }
  }
  std::array<char, 65536> chunk{};
  DWORD count = 0;
  if (!ReadFile(impl->output.Get(), chunk.data(), chunk.size(), &count, nullptr)) return false;
  bytes.append(chunk.data(), count);
  return true;
}

bool ChildProcess::Running() {
  return WaitForSingleObject(impl->process.Get(), 0) == WAIT_TIMEOUT;
}

int ChildProcess::Wait() {
  const auto limit = static_cast<DWORD>(std::chrono::milliseconds(kPatience).count());
  DWORD code = 0;
  if (WaitForSingleObject(impl->process.Get(), limit) != WAIT_OBJECT_0 ||
      !GetExitCodeProcess(impl->process.Get(), &code))
    Fail("the program doesn't end");
  return static_cast<int>(code);
}

void ChildProcess::Kill() {
  if (Running()) TerminateProcess(impl->process.Get(), 1);
}

}  // namespace zorvik::tests
