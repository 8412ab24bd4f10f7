#include "core/platform/replacement_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "core/platform/files.h"
#include "core/platform/posix.h"
#include "core/platform/private_folder_posix.h"

namespace zorvik::core::platform {

struct ReplacementFile::Native {
  Descriptor folder;  // All names below are looked up in it, wherever its path leads by then.
  Descriptor file;
  std::filesystem::path parent;
  std::string target;
  std::string temporary;
};

ReplacementFile::ReplacementFile(const std::filesystem::path& target)
    : native(std::make_unique<Native>()) {
  native->parent = target.parent_path();
  native->target = target.filename().native();
  native->temporary = native->target + ".tmp";
}

ReplacementFile::~ReplacementFile() {
  if (native->file.Valid()) unlinkat(native->folder.Get(), native->temporary.c_str(), 0);
}

bool ReplacementFile::PrepareFolder(bool trusted_only) {
  if (native->parent.empty())
    native->parent = ".";
  else if (!CreatePrivateFolders(native->parent))
    return false;
  if (trusted_only) {
    native->folder = OpenTrustedFolder(native->parent);
  } else {
    native->folder = Descriptor(RetryOnInterrupt(
        [&] { return open(native->parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
  }
  return native->folder.Valid();
}

bool ReplacementFile::Create(bool /*text_mode*/) {
  const char* const name = native->temporary.c_str();
  const int folder = native->folder.Get();
  // A leftover is removed rather than emptied: it may be a link, or stand open in a process that is
  // not to see the new contents.
  unlinkat(folder, name, 0);
  constexpr mode_t kOwn = S_IRUSR | S_IWUSR;
  native->file = Descriptor(RetryOnInterrupt(
      [&] { return openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwn); }));
  return native->file.Valid() && fchmod(native->file.Get(), kOwn) == 0;
}

bool ReplacementFile::Write(const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t taken = RetryOnInterrupt([&] { return write(native->file.Get(), bytes, count); });
    if (taken <= 0) return false;
    bytes += taken;
    count -= static_cast<std::size_t>(taken);
  }
  return true;
}

std::int64_t ReplacementFile::Seek(std::int64_t offset, int origin) {
  return lseek(native->file.Get(), offset, origin);
}

bool ReplacementFile::Sync() {
  return RetryOnInterrupt([&] { return fsync(native->file.Get()); }) == 0;
}

bool ReplacementFile::Replace() {
  const int folder = native->folder.Get();
  if (renameat(folder, native->temporary.c_str(), folder, native->target.c_str()) != 0)
    return false;
  native->file.Reset();
  return true;
}

bool ReplacementFile::SyncFolder() {
  const Descriptor folder(RetryOnInterrupt(
      [&] { return openat(native->folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  return folder.Valid() && RetryOnInterrupt([&] { return fsync(folder.Get()); }) == 0;
}

}  // namespace zorvik::core::platform
