#pragma once

#include <filesystem>
#include <string>

#include "core/platform/posix.h"

// Whom the POSIX sources in this folder trust with the user's files. Folders that are refused are
// told on standard error, each once in the life of the process.
namespace zorvik::core::platform {

// The folder for the pipes and, unless told otherwise, the home: /run/user/<uid>/zorvik where
// /run/user/<uid> is this user's own and closed to others, or else /tmp/zorvik-<uid>. No
// environment variable has a say, since an editor and a client seldom have the same ones.
std::string PrivateFolder();

// 0 when `folder`, one that PrivateFolder gave, belongs to this user and is closed to others; or
// else -1 with errno: ENOENT when it isn't there, EACCES when it is refused.
int CheckPrivateFolder(const std::string& folder);

// Whether nothing on the way to `path` is known to be in others' hands: false below a
// PrivateFolder that is refused.
bool WayIsTrusted(const std::filesystem::path& path);

// Makes one folder with all rights for this user and none for others, whatever the umask says.
// As mkdir, -1 on failure, with errno.
int MakePrivateFolder(const char* path);

// Opens a folder of which only this user or root can change the entries. A link at its place is
// refused as well. Invalid, with errno, when there is none; EACCES when it is refused.
Descriptor OpenTrustedFolder(const std::filesystem::path& path);

// Whether the open file belongs to this user or root and nobody else may write it.
bool FileIsTrusted(const Descriptor& file);

}  // namespace zorvik::core::platform
