#include "tests/support/byte_pipe.h"

#include <windows.h>

#include <utility>

namespace zorvik::tests {
namespace {

constexpr DWORD kCapacity = 65'536;

void CloseEnd(std::intptr_t& end) {
  const std::intptr_t closing = std::exchange(end, -1);
  // A handle is a number that Windows types as a pointer.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  if (closing != -1) CloseHandle(reinterpret_cast<HANDLE>(closing));
}

}  // namespace

BytePipe::BytePipe() {
  HANDLE read_end = INVALID_HANDLE_VALUE;
  HANDLE write_end = INVALID_HANDLE_VALUE;
  if (!CreatePipe(&read_end, &write_end, nullptr, kCapacity)) return;
  reader = reinterpret_cast<std::intptr_t>(read_end);
  writer = reinterpret_cast<std::intptr_t>(write_end);
}

BytePipe::~BytePipe() {
  CloseReader();
  CloseWriter();
}

void BytePipe::CloseReader() {
  CloseEnd(reader);
}

void BytePipe::CloseWriter() {
  CloseEnd(writer);
}

}  // namespace zorvik::tests
