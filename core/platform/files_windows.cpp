#include "core/platform/files.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <system_error>

#include "core/platform/windows.h"

namespace zorvik::core::platform {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

Handle Open(const std::filesystem::path& path, DWORD access, DWORD disposition) {
  return Handle(CreateFileW(path.c_str(), access, kShareAll, nullptr, disposition,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace

std::string PathText(const std::filesystem::path& path) {
  const std::wstring& wide = path.native();
  const int length = static_cast<int>(wide.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, text.data(), size, nullptr, nullptr);
  return text;
}

std::filesystem::path TextPath(const std::string& text) {
  return WideText(text);
}

std::filesystem::path TemporaryFolder() {
  std::array<wchar_t, MAX_PATH + 1> folder;
  const DWORD length = GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
  return length > 0 && length < folder.size() ? std::filesystem::path(folder.data()) : L".";
}

bool CreatePrivateFolders(const std::filesystem::path& path) {
  std::error_code failure;
  std::filesystem::create_directories(path, failure);
  return std::filesystem::is_directory(path, failure);
}

bool CreatePrivateFile(const std::filesystem::path& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
    DeleteFileW(path.c_str());
  return Open(path, GENERIC_WRITE, CREATE_ALWAYS).Valid();
}

bool ReadWholeFile(const std::filesystem::path& path, std::string& content) {
  content.clear();
  const Handle file = Open(path, GENERIC_READ, OPEN_EXISTING);
  if (!file.Valid() || GetFileType(file.Get()) != FILE_TYPE_DISK) return false;
  std::array<char, 65'536> chunk;
  while (true) {
    DWORD got = 0;
    if (!ReadFile(file.Get(), chunk.data(), static_cast<DWORD>(chunk.size()), &got, nullptr)) {
      content.clear();
      return false;
    }
    if (got == 0) return true;
    content.append(chunk.data(), got);
  }
}

bool SyncFile(const std::filesystem::path& path) {
  const Handle file = Open(path, GENERIC_WRITE, OPEN_EXISTING);
  return file.Valid() && FlushFileBuffers(file.Get());
}

bool SyncDirectory(const std::filesystem::path&) {
  // ReplaceDurably has put the move on disk already.
  return true;
}

}  // namespace zorvik::core::platform

namespace zorvik::core::win32 {

bool ReplaceDurably(const std::filesystem::path& from, const std::filesystem::path& to) {
  return MoveFileExW(from.c_str(), to.c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

}  // namespace zorvik::core::win32
