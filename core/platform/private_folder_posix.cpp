#include "core/platform/private_folder_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>
#include <optional>
#include <set>

#include "core/platform/streams.h"

namespace zorvik::core::platform {
namespace {

void TellRefusal(const std::string& folder, const std::string& reason) {
  static std::mutex mutex;
  static std::set<std::string> told;
  const std::lock_guard lock(mutex);
  if (!told.insert(folder).second) return;
  WriteStandardError("zorvik: pasta recusada: " + folder + ": " + reason + ".\n");
}

// Why the folder isn't the user's alone, if it isn't.
std::optional<std::string> Objection(const struct stat& status, bool root_may_own,
                                     mode_t rights_of_others) {
  if (!S_ISDIR(status.st_mode)) return "não é uma pasta";
  if (status.st_uid != geteuid() && !(root_may_own && status.st_uid == 0))
    return "pertence a outro usuário (uid " + std::to_string(status.st_uid) + ")";
  if ((status.st_mode & rights_of_others) != 0) return "outros usuários têm acesso a ela";
  return std::nullopt;
}

std::optional<std::string> ObjectionToPrivate(const struct stat& status) {
  return Objection(status, false, S_IRWXG | S_IRWXO);
}

}  // namespace

std::string PrivateFolder() {
  const std::string user = std::to_string(geteuid());
  const std::string session = "/run/user/" + user;
  struct stat status = {};
  if (lstat(session.c_str(), &status) == 0 && !ObjectionToPrivate(status))
    return session + "/zorvik";
  return "/tmp/zorvik-" + user;
}

int CheckPrivateFolder(const std::string& folder) {
  struct stat status = {};
  if (lstat(folder.c_str(), &status) != 0) return -1;
  const std::optional<std::string> objection = ObjectionToPrivate(status);
  if (!objection) return 0;
  TellRefusal(folder, *objection);
  errno = EACCES;
  return -1;
}

bool WayIsTrusted(const std::filesystem::path& path) {
  const std::string folder = PrivateFolder();
  return !path.native().starts_with(folder + "/") || CheckPrivateFolder(folder) == 0 ||
         errno == ENOENT;
}

int MakePrivateFolder(const char* path) {
  if (mkdir(path, S_IRWXU) != 0) return -1;
  // The umask may have taken rights of the user's own away. No link is followed: whoever owns the
  // folder above may have put one there meanwhile.
  fchmodat(AT_FDCWD, path, S_IRWXU, AT_SYMLINK_NOFOLLOW);
  return 0;
}

Descriptor OpenTrustedFolder(const std::filesystem::path& path) {
  if (!WayIsTrusted(path)) {
    errno = EACCES;
    return {};
  }
  constexpr int kFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
  Descriptor folder(RetryOnInterrupt([&] { return open(path.c_str(), kFlags); }));
  std::optional<std::string> objection;
  struct stat status = {};
  if (folder.Valid() && fstat(folder.Get(), &status) == 0)
    objection = Objection(status, true, S_IWGRP | S_IWOTH);
  else if (errno == EACCES)
    objection = "sem permissão de acesso";
  else
    return {};
  if (!objection) return folder;
  TellRefusal(path.native(), *objection);
  errno = EACCES;
  return {};
}

bool FileIsTrusted(const Descriptor& file) {
  struct stat status = {};
  return fstat(file.Get(), &status) == 0 && (status.st_uid == geteuid() || status.st_uid == 0) &&
         (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

}  // namespace zorvik::core::platform
