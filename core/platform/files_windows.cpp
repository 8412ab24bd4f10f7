#include "core/platform/files.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <system_error>

#include "core/platform/windows.h"

namespace zorvik::core::platform {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

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

bool ReadWholeFile(const std::filesystem::path& path, std::string& content) {
  content.clear();
  const Handle file(CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.Valid() || GetFileType(file.Get()) != FILE_TYPE_DISK) return false;
  std::array<char, 65'536> chunk;
  DWORD got = 0;
  bool read = true;
  do {
    content.append(chunk.data(), got);
    read = ReadFile(file.Get(), chunk.data(), static_cast<DWORD>(chunk.size()), &got, nullptr);
  } while (read && got > 0 && content.size() + got <= kLargestFile);
  const bool whole = read && got == 0;
  if (!whole) std::string().swap(content);
  return whole;
}

struct TrustedFolder::Native {
  std::filesystem::path path;
};

TrustedFolder::TrustedFolder() : native(std::make_unique<Native>()) {}
TrustedFolder::~TrustedFolder() = default;

bool TrustedFolder::Open(const std::filesystem::path& path) {
  native->path = path;
  std::error_code failure;
  return std::filesystem::is_directory(path, failure);
}

std::vector<std::filesystem::path> TrustedFolder::Names() const {
  std::vector<std::filesystem::path> names;
  std::error_code failure;
  std::filesystem::directory_iterator entry(native->path, failure);
  for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
    names.push_back(entry->path().filename());
  return names;
}

bool TrustedFolder::Read(const std::filesystem::path& name, std::string& content) const {
  return ReadWholeFile(native->path / name, content);
}

void TrustedFolder::Remove(const std::filesystem::path& name) const {
  std::error_code ignored;
  std::filesystem::remove(native->path / name, ignored);
}

}  // namespace zorvik::core::platform
