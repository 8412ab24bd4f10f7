#pragma once

#include <filesystem>
#include <string>

// What the standard library's files don't promise: privacy, durability, reads that can't hang, and
// path conversions that can't throw.
namespace zorvik::core::platform {

// The path as UTF-8, and back. POSIX takes the bytes as they are; Windows replaces what doesn't
// convert by U+FFFD.
std::string PathText(const std::filesystem::path& path);
std::filesystem::path TextPath(const std::string& text);

// The system's folder for temporary files.
std::filesystem::path TemporaryFolder();

// Makes `path` and all missing folders above it, the new ones open to this user alone (Windows: to
// whom the folder above them is). True when the folder exists at the end.
bool CreatePrivateFolders(const std::filesystem::path& path);

// Makes an empty file at `path` that this user alone can read and write, in place of whatever file
// is there. A link at that place is replaced, not followed. False when that can't be done. Windows
// leaves the rights to what the folder passes on to its files.
bool CreatePrivateFile(const std::filesystem::path& path);

// Reads the whole of a regular file into `content`. False, with `content` empty, for anything that
// is no regular file or can't be read; never waits for a writer.
bool ReadWholeFile(const std::filesystem::path& path, std::string& content);

// Forces the contents of the closed file at `path` to disk. False when it can't be opened or the
// disk refuses.
bool SyncFile(const std::filesystem::path& path);

// Makes a rename inside the folder at `path` durable. An empty path is the working directory.
// False when that can't be confirmed.
bool SyncDirectory(const std::filesystem::path& path);

}  // namespace zorvik::core::platform

namespace zorvik::core::win32 {

// Moves `from` over `to` in one atomic step, replacing `to` if it exists. Where the system can,
// it returns only once the move is on disk; elsewhere platform::SyncDirectory does that part.
bool ReplaceDurably(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace zorvik::core::win32
