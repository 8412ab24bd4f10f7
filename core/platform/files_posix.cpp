#include "core/platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <system_error>

#include "core/platform/posix.h"
#include "core/platform/private_folder_posix.h"

namespace zorvik::core::platform {
namespace {

// Reads the rest of a regular file.
bool ReadAll(const Descriptor& file, std::string& content) {
  struct stat status = {};
  if (!file.Valid() || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  std::array<char, 65'536> chunk;
  ssize_t got = 0;
  do {
    content.append(chunk.data(), static_cast<std::size_t>(got));
    got = RetryOnInterrupt([&] { return read(file.Get(), chunk.data(), chunk.size()); });
  } while (got > 0 && content.size() + static_cast<std::size_t>(got) <= kLargestFile);
  if (got != 0) std::string().swap(content);
  return got == 0;
}

// Without O_NONBLOCK the opening of a FIFO would wait for a writer.
Descriptor OpenToRead(int folder, const std::filesystem::path& path) {
  return Descriptor(RetryOnInterrupt(
      [&] { return openat(folder, path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
}

}  // namespace

std::string PathText(const std::filesystem::path& path) {
  return path.native();
}

std::filesystem::path TextPath(const std::string& text) {
  return text;
}

std::filesystem::path TemporaryFolder() {
  return PrivateFolder();
}

bool CreatePrivateFolders(const std::filesystem::path& path) {
  if (!WayIsTrusted(path)) return false;
  std::error_code failure;
  if (std::filesystem::is_directory(path, failure)) return true;
  std::filesystem::path folder;
  for (const std::filesystem::path& part : path) {
    folder /= part;
    // Fails for the folders that are there, or that another process makes at the same time.
    MakePrivateFolder(folder.c_str());
  }
  return std::filesystem::is_directory(path, failure);
}

bool ReadWholeFile(const std::filesystem::path& path, std::string& content) {
  content.clear();
  return ReadAll(OpenToRead(AT_FDCWD, path), content);
}

struct TrustedFolder::Native {
  Descriptor folder;
};

TrustedFolder::TrustedFolder() : native(std::make_unique<Native>()) {}
TrustedFolder::~TrustedFolder() = default;

bool TrustedFolder::Open(const std::filesystem::path& path) {
  native->folder = OpenTrustedFolder(path);
  return native->folder.Valid();
}

std::vector<std::filesystem::path> TrustedFolder::Names() const {
  std::vector<std::filesystem::path> names;
  const int listed = RetryOnInterrupt(
      [&] { return openat(native->folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  DIR* const entries = listed == -1 ? nullptr : fdopendir(listed);
  if (entries == nullptr) {
    Descriptor(listed).Reset();
    return names;
  }
  while (const dirent* const entry = readdir(entries)) names.emplace_back(entry->d_name);
  closedir(entries);
  return names;
}

bool TrustedFolder::Read(const std::filesystem::path& name, std::string& content) const {
  content.clear();
  const Descriptor file = OpenToRead(native->folder.Get(), name);
  return file.Valid() && FileIsTrusted(file) && ReadAll(file, content);
}

void TrustedFolder::Remove(const std::filesystem::path& name) const {
  unlinkat(native->folder.Get(), name.c_str(), 0);
}

}  // namespace zorvik::core::platform
