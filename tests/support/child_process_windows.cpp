#include "tests/support/child_process.h"

#include <windows.h>

#include <stdexcept>

#include "core/platform/files.h"
#include "core/win32.h"

namespace zorvik::tests {
namespace {

HANDLE Native(const OwnedHandle& handle) {
  // A handle is a number that Windows types as a pointer.
  return reinterpret_cast<HANDLE>(handle.Get());  // NOLINT(performance-no-int-to-ptr)
}

OwnedHandle OpenFile(const std::filesystem::path& path, DWORD access, DWORD disposition) {
  const HANDLE file =
      CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("a file doesn't open");
  return OwnedHandle(reinterpret_cast<std::intptr_t>(file));
}

// Lets the program have a handle that no other program gets.
HANDLE Inherited(const OwnedHandle& handle) {
  SetHandleInformation(Native(handle), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  return Native(handle);
}

}  // namespace

void ChildProcess::Spawn(const ProgramStart& start) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = Inherited(output.writer);
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  OwnedHandle file;
  if (!start.input_file) {
    startup.hStdInput = Inherited(input.reader);
  } else if (!start.input_file->empty()) {
    file = OpenFile(*start.input_file, GENERIC_READ, OPEN_EXISTING);
    startup.hStdInput = Inherited(file);
  }
  OwnedHandle errors;
  if (!start.error_file.empty()) {
    errors = OpenFile(start.error_file, GENERIC_WRITE, CREATE_ALWAYS);
    startup.hStdError = Inherited(errors);
  }

  const std::filesystem::path path =
      core::win32::ExecutablePath().parent_path() / (start.program + ".exe");
  // The tests' arguments hold no quotation marks, so that quoting each one whole is enough.
  std::wstring command = L'"' + path.wstring() + L'"';
  for (const std::string& argument : start.arguments)
    command += L" \"" + core::platform::TextPath(argument).wstring() + L'"';
  PROCESS_INFORMATION made{};
  if (!CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                      &startup, &made))
    throw std::runtime_error("the program doesn't start");
  CloseHandle(made.hThread);
  process = OwnedHandle(reinterpret_cast<std::intptr_t>(made.hProcess));
  id = made.dwProcessId;
}

bool ChildProcess::Running() {
  DWORD code = 0;
  if (!exit_code && WaitForSingleObject(Native(process), 0) == WAIT_OBJECT_0 &&
      GetExitCodeProcess(Native(process), &code))
    exit_code = static_cast<int>(code);
  return !exit_code;
}

void ChildProcess::Kill() {
  if (Running()) TerminateProcess(Native(process), 1);
}

}  // namespace zorvik::tests
