#include "core/platform/streams.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

namespace zorvik::core::platform {
namespace {

HANDLE Handle(std::intptr_t native) {
  // A handle is a number that Windows types as a pointer.
  return reinterpret_cast<HANDLE>(native);  // NOLINT(performance-no-int-to-ptr)
}

bool IsHandle(std::intptr_t native) {
  return native != 0 && Handle(native) != INVALID_HANDLE_VALUE;
}

std::intptr_t StandardHandle(DWORD which) {
  return reinterpret_cast<std::intptr_t>(GetStdHandle(which));
}

DWORD Clamp(std::size_t size) {
  return static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<DWORD>::max()));
}

// Carries what is typed at the console into a pipe, until the end.
DWORD WINAPI CarryConsole(void* pipe) {
  const HANDLE console = GetStdHandle(STD_INPUT_HANDLE);
  std::array<char, 4096> bytes;
  DWORD count = 0;
  while (ReadFile(console, bytes.data(), Clamp(bytes.size()), &count, nullptr) && count > 0 &&
         WriteFile(pipe, bytes.data(), count, &count, nullptr)) {
  }
  CloseHandle(pipe);
  return 0;
}

void KeepLineFeeds(std::FILE* file) {
  const int descriptor = _fileno(file);
  if (descriptor >= 0) _setmode(descriptor, _O_BINARY);
}

}  // namespace

void PrepareStandardStreams() {
  // Missing streams need no care here: a handle that is opened later never becomes a standard one.
  KeepLineFeeds(stdout);
  KeepLineFeeds(stderr);
}

void WriteStandardError(std::string_view line) {
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}

InputStream InputStream::Standard() {
  return Borrow(StandardHandle(STD_INPUT_HANDLE));
}

InputStream InputStream::StandardWithTerminal() {
  // A console tells which keys were pressed, but not whether they make a line yet: only a read
  // does, and it waits.
  DWORD mode = 0;
  HANDLE reader = nullptr;
  HANDLE writer = nullptr;
  if (!GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) ||
      !CreatePipe(&reader, &writer, nullptr, 0))
    return Standard();
  const HANDLE thread = CreateThread(nullptr, 0, CarryConsole, writer, 0, nullptr);
  if (thread == nullptr) CloseHandle(writer);
  CloseHandle(thread);
  return Borrow(reinterpret_cast<std::intptr_t>(reader));
}

InputStream InputStream::Borrow(std::intptr_t handle) {
  InputStream stream;
  stream.native = handle;
  stream.can_peek = stream.Valid() && GetFileType(Handle(handle)) == FILE_TYPE_PIPE;
  return stream;
}

bool InputStream::Valid() const {
  return IsHandle(native);
}

bool InputStream::Peek(std::size_t& available) const {
  DWORD count = 0;
  if (!PeekNamedPipe(Handle(native), nullptr, 0, nullptr, &count, nullptr)) return false;
  available = count;
  return true;
}

bool InputStream::WaitForMore() const {
  // A sleep takes far longer than a writer that is at work needs for the next piece.
  constexpr int kTurns = 64;
  std::size_t available = 0;
  for (int turn = 0; turn < kTurns && available == 0; ++turn) {
    SwitchToThread();
    if (!Peek(available)) return true;
  }
  return available > 0;
}

void InputStream::AddTo(WaitSources&) const {}

bool InputStream::Read(char* bytes, std::size_t limit, std::size_t& count) const {
  DWORD got = 0;
  if (!ReadFile(Handle(native), bytes, Clamp(limit), &got, nullptr)) return false;
  count = got;
  return true;
}

OutputStream OutputStream::Standard() {
  return Borrow(StandardHandle(STD_OUTPUT_HANDLE));
}

OutputStream OutputStream::Borrow(std::intptr_t handle) {
  OutputStream stream;
  stream.native = handle;
  return stream;
}

bool OutputStream::Valid() const {
  return IsHandle(native);
}

bool OutputStream::Write(const char* bytes, std::size_t size, std::size_t& count) const {
  DWORD taken = 0;
  if (!WriteFile(Handle(native), bytes, Clamp(size), &taken, nullptr)) return false;
  count = taken;
  return true;
}

}  // namespace zorvik::core::platform
