#include "core/file_write.h"

#include <atomic>
#include <fstream>
#include <system_error>
#include <utility>

#include "core/platform/files.h"

namespace zorvik::core {
namespace {

std::atomic<WriteStep> injected = WriteStep::None;

// Whether a failure is armed for `step`; it is used up by that.
bool TakeInjected(WriteStep step) {
  return injected.compare_exchange_strong(step, WriteStep::None);
}

// Removes the temporary file at the end of the scope, whatever became of it. After a replacement
// there is nothing left to remove.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::filesystem::path& target) : path(target) { path += ".tmp"; }
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::filesystem::path& Path() const { return path; }

 private:
  std::filesystem::path path;
};

}  // namespace

WriteResult WriteFileDurably(const std::filesystem::path& path, const ContentWriter& writer,
                             FileEncoding encoding) {
  const std::string name = platform::PathText(path.filename());
  const auto failure = [&path](WriteStatus status, std::string message) {
    return WriteResult{status, platform::PathText(path), std::move(message)};
  };
  const std::string not_written =
      "não foi possível gravar " + name + " (disco cheio ou pasta sem permissão).";

  const std::filesystem::path folder = path.parent_path();
  if (!folder.empty() &&
      (!platform::CreatePrivateFolders(folder) || TakeInjected(WriteStep::CreateFolder)))
    return failure(WriteStatus::FolderFailed, "não foi possível criar a pasta de " + name + ".");

  // Declared before the stream, so that it goes after the stream is closed.
  const TemporaryFile temporary(path);
  std::ofstream stream;
  if (platform::CreatePrivateFile(temporary.Path())) {
    const auto text_mode = std::ios::out | std::ios::trunc;
    stream.open(temporary.Path(),
                encoding == FileEncoding::Binary ? text_mode | std::ios::binary : text_mode);
  }
  if (!stream.is_open() || TakeInjected(WriteStep::OpenTemporary))
    return failure(WriteStatus::WriteFailed, not_written);

  std::string reason;
  const bool produced = writer(stream, reason);
  stream.close();
  if (!produced) {
    if (reason.empty()) reason = "o conteúdo de " + name + " não pôde ser produzido.";
    return failure(WriteStatus::ContentFailed, std::move(reason));
  }
  if (!stream || TakeInjected(WriteStep::WriteTemporary))
    return failure(WriteStatus::WriteFailed, not_written);
  if (!platform::SyncFile(temporary.Path()) || TakeInjected(WriteStep::SyncTemporary)) {
    return failure(WriteStatus::WriteFailed, "não foi possível gravar " + name +
                                                 " no disco (o disco recusou a sincronização). "
                                                 "O arquivo anterior foi preservado.");
  }

  // What has been replaced can't be taken back, so here the forced failure comes first.
  if (TakeInjected(WriteStep::ReplaceTarget) || !win32::ReplaceDurably(temporary.Path(), path)) {
    return failure(WriteStatus::ReplaceFailed,
                   "não foi possível substituir " + name +
                       "; ele pode estar protegido contra escrita ou aberto em outro programa. "
                       "O arquivo anterior foi preservado.");
  }
  if (!platform::SyncDirectory(folder)) {
    return failure(WriteStatus::WriteFailed,
                   name +
                       " foi trocado, mas a pasta não confirmou a troca no disco; depois de uma "
                       "queda de energia ele pode voltar a ser o anterior.");
  }
  return {};
}

WriteResult WriteFileDurably(const std::filesystem::path& path, std::string_view content,
                             FileEncoding encoding) {
  const auto write_all = [content](std::ostream& stream, std::string&) {
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    return true;
  };
  return WriteFileDurably(path, ContentWriter(write_all), encoding);
}

bool WriteFileReplacing(const std::filesystem::path& path, std::string_view content,
                        std::string& error) {
  WriteResult result = WriteFileDurably(path, content, FileEncoding::Binary);
  if (result.status == WriteStatus::Ok) return true;
  error = std::move(result.message);
  return false;
}

void InjectWriteFailure(WriteStep step) {
  injected.exchange(step);
}

}  // namespace zorvik::core
