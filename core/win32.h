#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

// Path conversions and graphics lookups for programs built on the shared core. The names are those
// of the platform that they were made for; elsewhere they keep their meaning.
namespace zorvik::core::win32 {

// A path from bytes in the system's active code page (POSIX: the bytes as they are). Empty for an
// empty text and for one that doesn't convert.
std::filesystem::path WidePath(const std::string& text);

// The reverse. Empty when a character has no exact equivalent, so that a caller can tell a path
// which narrow interfaces can't open.
std::string NarrowPath(const std::filesystem::path& path);

// The path of the running program; empty when the system doesn't tell.
std::filesystem::path ExecutablePath();

// The address of a function of the graphics library, or null. The library is loaded at first use.
void* GlProcAddress(const char* name);

// A number for the graphics context that is current on this thread, 0 when there is none. The same
// context gets another number after each RetireGlContext.
std::uint64_t CurrentGlContext();
void RetireGlContext();

}  // namespace zorvik::core::win32
