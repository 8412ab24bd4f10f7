#include "core/platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <system_error>

#include "core/platform/posix.h"

namespace zorvik::core::platform {
namespace {

Descriptor Open(const std::filesystem::path& path, int flags, mode_t mode = 0) {
  return Descriptor(RetryOnInterrupt([&] { return open(path.c_str(), flags | O_CLOEXEC, mode); }));
}

bool Sync(const Descriptor& file) {
  return file.Valid() && RetryOnInterrupt([&] { return fsync(file.Get()); }) == 0;
}

}  // namespace

std::string PathText(const std::filesystem::path& path) {
  return path.native();
}

std::filesystem::path TextPath(const std::string& text) {
  return text;
}

std::filesystem::path TemporaryFolder() {
  std::error_code failure;
  std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
  return failure ? std::filesystem::path("/tmp") : folder;
}

bool CreatePrivateFolders(const std::filesystem::path& path) {
  std::error_code failure;
  if (std::filesystem::is_directory(path, failure)) return true;
  std::filesystem::path folder;
  for (const std::filesystem::path& part : path) {
    folder /= part;
    // Fails for the folders that are there, or that another process makes at the same time.
    mkdir(folder.c_str(), S_IRWXU);
  }
  return std::filesystem::is_directory(path, failure);
}

bool CreatePrivateFile(const std::filesystem::path& path) {
  // A leftover is removed rather than emptied: it may be a link, or stand open in a process that is
  // not to see the new contents.
  unlink(path.c_str());
  const Descriptor file = Open(path, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
  return file.Valid() && fchmod(file.Get(), S_IRUSR | S_IWUSR) == 0;
}

bool ReadWholeFile(const std::filesystem::path& path, std::string& content) {
  content.clear();
  // Without O_NONBLOCK the opening of a FIFO would wait for a writer.
  const Descriptor file = Open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat status = {};
  if (!file.Valid() || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  std::array<char, 65'536> chunk;
  while (true) {
    const ssize_t got =
        RetryOnInterrupt([&] { return read(file.Get(), chunk.data(), chunk.size()); });
    if (got == 0) return true;
    if (got < 0) {
      content.clear();
      return false;
    }
    content.append(chunk.data(), static_cast<std::size_t>(got));
  }
}

bool SyncFile(const std::filesystem::path& path) {
  return Sync(Open(path, O_WRONLY | O_NONBLOCK));
}

bool SyncDirectory(const std::filesystem::path& path) {
  return Sync(Open(path.empty() ? "." : path, O_RDONLY | O_DIRECTORY));
}

}  // namespace zorvik::core::platform

namespace zorvik::core::win32 {

bool ReplaceDurably(const std::filesystem::path& from, const std::filesystem::path& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace zorvik::core::win32
