#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tests/support/environment.h"

namespace zorvik::tests {

// A fresh, empty folder that is McpHome() until the end of the scope and is deleted then.
class TemporaryHome {
 public:
  TemporaryHome();
  ~TemporaryHome();
  TemporaryHome(const TemporaryHome&) = delete;
  TemporaryHome& operator=(const TemporaryHome&) = delete;

  const std::filesystem::path& Path() const { return folder; }
  std::filesystem::path Editors() const { return folder / "editors"; }

 private:
  std::filesystem::path folder;
  ScopedEnvironment home;
};

// Writes a small file as it is, making the folders above it.
void WriteText(const std::filesystem::path& path, std::string_view text);
// The bytes of a file; empty when it can't be read.
std::string ReadText(const std::filesystem::path& path);

}  // namespace zorvik::tests
