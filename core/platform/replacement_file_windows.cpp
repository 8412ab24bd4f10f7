#include "core/platform/replacement_file.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <climits>

#include "core/platform/files.h"
#include "core/platform/windows.h"

namespace zorvik::core::platform {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr ULONGLONG kReplacePatienceMs = 250;

// Whether a move that failed just now can succeed in a moment. Windows doesn't replace a file that
// somebody reads, which servers do with the editors' records and scanners with everything.
bool IsWorthRepeating(DWORD code, const std::wstring& target) {
  if (code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION) return false;
  const DWORD attributes = GetFileAttributesW(target.c_str());
  return attributes == INVALID_FILE_ATTRIBUTES ||
         (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) == 0;
}

}  // namespace

struct ReplacementFile::Native {
  void Close() {
    if (file != -1) _close(file);
    file = -1;
  }

  int file = -1;  // The C library's, which knows the text mode.
  bool exists = false;
  std::filesystem::path target;
  std::wstring temporary;
};

ReplacementFile::ReplacementFile(const std::filesystem::path& target)
    : native(std::make_unique<Native>()) {
  native->target = target;
  native->temporary = target.native() + L".tmp";
}

ReplacementFile::~ReplacementFile() {
  native->Close();
  if (native->exists) DeleteFileW(native->temporary.c_str());
}

bool ReplacementFile::PrepareFolder(bool /*trusted_only*/) {
  const std::filesystem::path folder = native->target.parent_path();
  return folder.empty() || CreatePrivateFolders(folder);
}

bool ReplacementFile::Create(bool text_mode) {
  // A leftover may be a link, which must not be followed.
  DeleteFileW(native->temporary.c_str());
  Handle file(CreateFileW(native->temporary.c_str(), GENERIC_WRITE, kShareAll, nullptr, CREATE_NEW,
                          FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.Valid()) return false;
  native->exists = true;
  native->file =
      _open_osfhandle(reinterpret_cast<intptr_t>(file.Get()), text_mode ? _O_TEXT : _O_BINARY);
  if (native->file == -1) return false;
  file.Release();
  return true;
}

bool ReplacementFile::Write(const char* bytes, std::size_t count) {
  while (count > 0) {
    const int taken =
        _write(native->file, bytes, static_cast<unsigned>(std::min<std::size_t>(count, INT_MAX)));
    if (taken <= 0) return false;
    bytes += taken;
    count -= static_cast<std::size_t>(taken);
  }
  return true;
}

std::int64_t ReplacementFile::Seek(std::int64_t offset, int origin) {
  return _lseeki64(native->file, offset, origin);
}

bool ReplacementFile::Sync() {
  return FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(native->file))) != 0;
}

bool ReplacementFile::Replace() {
  native->Close();
  const std::wstring& target = native->target.native();
  const ULONGLONG deadline = GetTickCount64() + kReplacePatienceMs;
  while (!MoveFileExW(native->temporary.c_str(), target.c_str(),
                      MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    if (!IsWorthRepeating(GetLastError(), target) || GetTickCount64() >= deadline) return false;
    Sleep(1);
  }
  native->exists = false;
  return true;
}

bool ReplacementFile::SyncFolder() {
  return true;  // MOVEFILE_WRITE_THROUGH has done it.
}

}  // namespace zorvik::core::platform
