#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <utility>

// The small change of the Windows sources in this folder. Nobody else includes it.
namespace zorvik::core::platform {

// An open file, pipe or process, closed at the end of the scope. Windows writes "none" as null or
// as INVALID_HANDLE_VALUE; here both are null.
class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE opened) : handle(opened == INVALID_HANDLE_VALUE ? nullptr : opened) {}
  Handle(Handle&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle, other.handle);
    return *this;
  }
  ~Handle() { Reset(); }

  void Reset() {
    if (Valid()) CloseHandle(handle);
    handle = nullptr;
  }
  // Leaves the closing to somebody else.
  void Release() { handle = nullptr; }
  bool Valid() const { return handle != nullptr; }
  HANDLE Get() const { return handle; }

 private:
  HANDLE handle = nullptr;
};

// Text of a code page as wide text. With the flag MB_ERR_INVALID_CHARS, text that doesn't convert
// gives an empty one; without it, what doesn't convert becomes U+FFFD.
inline std::wstring WideText(std::string_view text, UINT code_page = CP_UTF8, DWORD flags = 0) {
  const int length = static_cast<int>(text.size());
  const int size =
      length == 0 ? 0 : MultiByteToWideChar(code_page, flags, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  if (size > 0) MultiByteToWideChar(code_page, flags, text.data(), length, wide.data(), size);
  return wide;
}

}  // namespace zorvik::core::platform
