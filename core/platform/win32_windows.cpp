#include "core/win32.h"

#include <windows.h>

#include <atomic>
#include <cstddef>

#include "core/platform/windows.h"

namespace zorvik::core::win32 {
namespace {

constexpr DWORD kLongestPath = 32'768;

std::atomic<std::uint64_t> retired_contexts = 0;

HMODULE GraphicsLibrary() {
  static HMODULE const library = LoadLibraryA("opengl32.dll");
  return library;
}

void* LibrarySymbol(const char* name) {
  if (GraphicsLibrary() == nullptr) return nullptr;
  return reinterpret_cast<void*>(GetProcAddress(GraphicsLibrary(), name));
}

}  // namespace

std::filesystem::path WidePath(const std::string& text) {
  return platform::WideText(text, CP_ACP, MB_ERR_INVALID_CHARS);
}

std::string NarrowPath(const std::filesystem::path& path) {
  const std::wstring& wide = path.native();
  const int length = static_cast<int>(wide.size());
  // A code page that is UTF-8 refuses both the flag and the question for replaced characters.
  const bool utf8 = GetACP() == CP_UTF8;
  const DWORD flags = utf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
  BOOL replaced = FALSE;
  BOOL* const tell_replaced = utf8 ? nullptr : &replaced;
  const int size =
      WideCharToMultiByte(CP_ACP, flags, wide.data(), length, nullptr, 0, nullptr, tell_replaced);
  if (size <= 0 || replaced) return {};
  std::string text(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, flags, wide.data(), length, text.data(), size, nullptr, nullptr);
  return text;
}

std::filesystem::path ExecutablePath() {
  std::wstring path(kLongestPath, L'\0');
  const DWORD length = GetModuleFileNameW(nullptr, path.data(), kLongestPath);
  if (length == 0 || length >= kLongestPath) return {};
  path.resize(length);
  return path;
}

void* GlProcAddress(const char* name) {
  using Lookup = PROC(WINAPI*)(LPCSTR);
  static const auto lookup = reinterpret_cast<Lookup>(LibrarySymbol("wglGetProcAddress"));
  if (lookup != nullptr) {
    void* const found = reinterpret_cast<void*>(lookup(name));
    if (found != nullptr) return found;
  }
  return LibrarySymbol(name);
}

std::uint64_t CurrentGlContext() {
  using Current = HGLRC(WINAPI*)();
  static const auto current = reinterpret_cast<Current>(LibrarySymbol("wglGetCurrentContext"));
  HGLRC context = current == nullptr ? nullptr : current();
  if (context == nullptr) return 0;
  return reinterpret_cast<std::uintptr_t>(context) ^ (retired_contexts << 40);
}

void RetireGlContext() {
  ++retired_contexts;
}

}  // namespace zorvik::core::win32
