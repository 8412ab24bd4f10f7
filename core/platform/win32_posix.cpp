#include "core/win32.h"

#include <dlfcn.h>

#include <atomic>
#include <system_error>

namespace zorvik::core::win32 {
namespace {

std::atomic<std::uint64_t> retired_contexts = 0;

void* GraphicsLibrary() {
  static void* const library = dlopen("libGL.so.1", RTLD_LAZY | RTLD_LOCAL);
  return library;
}

void* LibrarySymbol(const char* name) {
  return GraphicsLibrary() == nullptr ? nullptr : dlsym(GraphicsLibrary(), name);
}

}  // namespace

std::filesystem::path WidePath(const std::string& text) {
  return text;
}

std::string NarrowPath(const std::filesystem::path& path) {
  return path.native();
}

std::filesystem::path ExecutablePath() {
  std::error_code failure;
  std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
  return failure ? std::filesystem::path() : program;
}

void* GlProcAddress(const char* name) {
  using Lookup = void* (*)(const unsigned char*);
  static const auto lookup = reinterpret_cast<Lookup>(LibrarySymbol("glXGetProcAddressARB"));
  if (lookup != nullptr) {
    void* const found = lookup(reinterpret_cast<const unsigned char*>(name));
    if (found != nullptr) return found;
  }
  return LibrarySymbol(name);
}

std::uint64_t CurrentGlContext() {
  using Current = void* (*)();
  static const auto current = reinterpret_cast<Current>(LibrarySymbol("glXGetCurrentContext"));
  void* const context = current == nullptr ? nullptr : current();
  if (context == nullptr) return 0;
  return reinterpret_cast<std::uintptr_t>(context) ^ (retired_contexts << 40);
}

void RetireGlContext() {
  ++retired_contexts;
}

}  // namespace zorvik::core::win32
