#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// What the standard library's files don't promise: privacy, reads that can't hang, and path
// conversions that can't throw.
namespace zorvik::core::platform {

// The path as UTF-8, and back. POSIX takes the bytes as they are; Windows replaces what doesn't
// convert by U+FFFD.
std::string PathText(const std::filesystem::path& path);
std::filesystem::path TextPath(const std::string& text);

// The folder for files of this user that need not last, which may not be there yet. POSIX: the
// private folder in which the pipes stand too, since its folder for temporary files is everybody's.
std::filesystem::path TemporaryFolder();

// Makes `path` and all missing folders above it, the new ones open to this user alone (Windows: to
// whom the folder above them is), whatever the umask. True when the folder exists at the end; false
// for a way through a TemporaryFolder that somebody else has made.
bool CreatePrivateFolders(const std::filesystem::path& path);

// What ReadWholeFile reads at most, in bytes: as much as the JSON reader takes.
inline constexpr std::size_t kLargestFile = 16'777'216;

// Reads the whole of a regular file into `content`. False, with `content` empty, for anything that
// is no regular file, can't be read, or turns out larger than kLargestFile, whatever size it
// claims; never waits for a writer.
bool ReadWholeFile(const std::filesystem::path& path, std::string& content);

// A folder whose contents are believed: nobody but this user and the system can change its entries.
// Windows leaves that to the rights of the home; POSIX looks, and tells on standard error which
// folder was refused and why, once. Where the path leads after Open makes no difference there.
class TrustedFolder {
 public:
  TrustedFolder();
  ~TrustedFolder();
  TrustedFolder(const TrustedFolder&) = delete;
  TrustedFolder& operator=(const TrustedFolder&) = delete;

  // False when there is no such folder, or it is refused. To be called once, before the others.
  bool Open(const std::filesystem::path& path);
  // The names of all entries, in no order, or as many as could be read.
  std::vector<std::filesystem::path> Names() const;
  // As ReadWholeFile; refuses files that belong to others or that others may write, too.
  bool Read(const std::filesystem::path& name, std::string& content) const;
  // Deletes the file if it is there and that is possible.
  void Remove(const std::filesystem::path& name) const;

 private:
  struct Native;
  std::unique_ptr<Native> native;
};

}  // namespace zorvik::core::platform
