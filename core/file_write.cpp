#include "core/file_write.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <streambuf>
#include <utility>

#include "core/platform/files.h"
#include "core/platform/replacement_file.h"

namespace zorvik::core {
namespace {

std::atomic<WriteStep> injected = WriteStep::None;

// Whether a failure is armed for `step`; it is used up by that.
bool TakeInjected(WriteStep step) {
  return injected.compare_exchange_strong(step, WriteStep::None);
}

// What a writer's stream writes to.
class FileBuffer : public std::streambuf {
 public:
  explicit FileBuffer(platform::ReplacementFile& written) : file(written) { Empty(); }

 protected:
  int_type overflow(int_type value) override {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(value, traits_type::eof()))
      sputc(traits_type::to_char_type(value));
    return traits_type::not_eof(value);
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    if (count <= epptr() - pptr()) {
      std::copy_n(bytes, count, pptr());
      pbump(static_cast<int>(count));
      return count;
    }
    return sync() == 0 && file.Write(bytes, static_cast<std::size_t>(count)) ? count : 0;
  }
  int sync() override {
    const bool written = file.Write(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    Empty();
    return written ? 0 : -1;
  }
  pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override {
    if (sync() != 0) return off_type(-1);
    const bool from_start = from == std::ios_base::beg;
    return file.Seek(offset, from_start                   ? SEEK_SET
                             : from == std::ios_base::cur ? SEEK_CUR
                                                          : SEEK_END);
  }
  pos_type seekpos(pos_type place, std::ios_base::openmode which) override {
    return seekoff(place, std::ios_base::beg, which);
  }

 private:
  void Empty() { setp(buffer.data(), buffer.data() + buffer.size()); }

  platform::ReplacementFile& file;
  std::array<char, 16'384> buffer;
};

WriteResult Write(const std::filesystem::path& path, const ContentWriter& writer,
                  FileEncoding encoding, bool trusted_only) {
  const std::string name = platform::PathText(path.filename());
  const auto failure = [&path](WriteStatus status, std::string message) {
    return WriteResult{status, platform::PathText(path), std::move(message)};
  };
  const std::string not_written =
      "não foi possível gravar " + name + " (disco cheio ou pasta sem permissão).";

  platform::ReplacementFile file(path);
  if (!file.PrepareFolder(trusted_only) ||
      (path.has_parent_path() && TakeInjected(WriteStep::CreateFolder)))
    return failure(WriteStatus::FolderFailed, "não foi possível criar a pasta de " + name + ".");
  if (!file.Create(encoding != FileEncoding::Binary) || TakeInjected(WriteStep::OpenTemporary))
    return failure(WriteStatus::WriteFailed, not_written);

  FileBuffer buffer(file);
  std::ostream stream(&buffer);
  std::string reason;
  if (!writer(stream, reason)) {
    if (reason.empty()) reason = "o conteúdo de " + name + " não pôde ser produzido.";
    return failure(WriteStatus::ContentFailed, std::move(reason));
  }
  if (buffer.pubsync() != 0 || !stream || TakeInjected(WriteStep::WriteTemporary))
    return failure(WriteStatus::WriteFailed, not_written);
  if (!file.Sync() || TakeInjected(WriteStep::SyncTemporary)) {
    return failure(WriteStatus::WriteFailed, "não foi possível gravar " + name +
                                                 " no disco (o disco recusou a sincronização). "
                                                 "O arquivo anterior foi preservado.");
  }

  // What has been replaced can't be taken back, so here the forced failure comes first.
  if (TakeInjected(WriteStep::ReplaceTarget) || !file.Replace()) {
    return failure(WriteStatus::ReplaceFailed,
                   "não foi possível substituir " + name +
                       "; ele pode estar protegido contra escrita ou aberto em outro programa. "
                       "O arquivo anterior foi preservado.");
  }
  if (!file.SyncFolder()) {
    return failure(WriteStatus::WriteFailed,
                   name +
                       " foi trocado, mas a pasta não confirmou a troca no disco; depois de uma "
                       "queda de energia ele pode voltar a ser o anterior.");
  }
  return {};
}

ContentWriter WriterOf(std::string_view content) {
  return [content](std::ostream& stream, std::string&) {
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    return true;
  };
}

}  // namespace

WriteResult WriteFileDurably(const std::filesystem::path& path, const ContentWriter& writer,
                             FileEncoding encoding) {
  return Write(path, writer, encoding, false);
}

WriteResult WriteFileDurably(const std::filesystem::path& path, std::string_view content,
                             FileEncoding encoding) {
  return Write(path, WriterOf(content), encoding, false);
}

WriteResult WriteHomeFile(const std::filesystem::path& path, std::string_view content) {
  return Write(path, WriterOf(content), FileEncoding::Binary, true);
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
