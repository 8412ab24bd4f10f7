#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>

namespace zorvik::core::platform {

// The new contents of a file, on their way to its place. They stand in a file of their own, which
// is created once and from then on written, flushed and moved without its path being opened again:
// where others may write the folder, they could have put a link there meanwhile. The operations are
// called in the order in which they stand here. Each is false when it failed.
class ReplacementFile {
 public:
  // `target` + ".tmp" will be the file's name until it takes the target's place.
  explicit ReplacementFile(const std::filesystem::path& target);
  // Removes the file unless it has taken the target's place.
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  // Makes the target's folder and all missing ones above it, as CreatePrivateFolders. With
  // `trusted_only`, fails if anybody but this user and the system can change the folder's entries;
  // POSIX then tells on standard error which folder and why, once.
  bool PrepareFolder(bool trusted_only);
  // Creates the file, which this user alone can read and write, in place of a leftover. Windows
  // leaves the rights to what the folder passes on. `text_mode` is the platform's.
  bool Create(bool text_mode);
  bool Write(const char* bytes, std::size_t count);
  // Moves the place of the next Write. `origin` is SEEK_SET, SEEK_CUR or SEEK_END. Returns the new
  // place from the start, -1 on failure.
  std::int64_t Seek(std::int64_t offset, int origin);
  // Forces the contents to disk.
  bool Sync();
  // Takes the target's place in one atomic step. Windows waits up to a quarter of a second for
  // other programs to close the target.
  bool Replace();
  // Forces that step to disk.
  bool SyncFolder();

 private:
  struct Native;
  std::unique_ptr<Native> native;
};

}  // namespace zorvik::core::platform
