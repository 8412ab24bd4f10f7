#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace zorvik::core {

enum class WriteStatus : std::uint32_t {
  Ok = 0,             // The target holds the new contents.
  FolderFailed = 2,   // The target's folder could not be made.
  WriteFailed = 3,    // The contents, or the replacement, didn't reach the disk for certain.
  ReplaceFailed = 4,  // The temporary file could not take the target's place.
  ContentFailed = 5,  // The caller's writer gave up.
};

struct WriteResult {
  WriteStatus status = WriteStatus::Ok;
  std::string path;     // On failure the target's whole path, as UTF-8.
  std::string message;  // On failure a Portuguese sentence for the person.
};

// How the temporary file is opened. TextMode is the platform's text mode, which on Windows turns a
// line feed into CR LF.
enum class FileEncoding : std::uint32_t { Binary = 0, TextMode = 1 };

// A point of the writing sequence at which a failure can be forced.
enum class WriteStep : std::uint32_t {
  None = 0,
  CreateFolder = 1,
  OpenTemporary = 2,
  WriteTemporary = 3,
  SyncTemporary = 4,
  ReplaceTarget = 5,
};

// Writes the contents to the stream. When it can't produce them it returns false and may leave an
// explanation in the text.
using ContentWriter = std::function<bool(std::ostream&, std::string&)>;

// Replaces the file at `path` as a whole or not at all: the contents go to `path` + ".tmp" in the
// same folder, are forced to disk and take the target's place in one step. Missing folders are
// made. Folders and file are private to the user. After a failure the earlier file is still there,
// but for the one case whose message says otherwise. Two writes of one path at the same time are
// not guarded against each other.
WriteResult WriteFileDurably(const std::filesystem::path& path, const ContentWriter& writer,
                             FileEncoding encoding);
WriteResult WriteFileDurably(const std::filesystem::path& path, std::string_view content,
                             FileEncoding encoding);

// As WriteFileDurably in binary, for what stands in the home. Fails with FolderFailed where anybody
// but this user and the system can change the folder's entries (POSIX), since whoever can do that
// decides what is read there next.
WriteResult WriteHomeFile(const std::filesystem::path& path, std::string_view content);

// As WriteFileDurably in binary. On failure returns false with the message in `error`, which is
// left alone on success.
bool WriteFileReplacing(const std::filesystem::path& path, std::string_view content,
                        std::string& error);

// Makes the next write that gets through `step` fail there as if the step had failed, once. None
// disarms. Serves tests of failure paths.
void InjectWriteFailure(WriteStep step);

}  // namespace zorvik::core
