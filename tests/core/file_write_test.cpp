#include "core/file_write.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>

#include "core/platform/files.h"
#include "tests/support/temporary_home.h"

namespace zorvik::core {
namespace {

using tests::ReadText;
using tests::WriteText;

class FileWriteTest : public testing::Test {
 protected:
  ~FileWriteTest() override { InjectWriteFailure(WriteStep::None); }

  static WriteStatus Status(const std::filesystem::path& path) {
    return WriteFileDurably(path, "x", FileEncoding::Binary).status;
  }

  tests::TemporaryHome home;
  std::filesystem::path target = home.Path() / "a" / "b" / "nome.json";
  std::filesystem::path temporary = home.Path() / "a" / "b" / "nome.json.tmp";
};

TEST_F(FileWriteTest, ReplacesTheWholeFileInFoldersThatItMakes) {
  std::string error = "intacto";
  for (const std::string& content : {std::string("linha\nfim\r\n\0x", 13), std::string()}) {
    EXPECT_TRUE(WriteFileReplacing(target, content, error));
    EXPECT_EQ(ReadText(target), content);
    EXPECT_FALSE(std::filesystem::exists(temporary));
    // A leftover of a crash is longer than what comes next, and must not show through.
    WriteText(temporary, "resto de uma queda");
  }
  EXPECT_EQ(error, "intacto");
}

TEST_F(FileWriteTest, AWriterMayGoBackInItsStream) {
  const auto writer = [](std::ostream& stream, std::string&) {
    for (int i = 0; i < 9'999; ++i) stream << "\n1";
    stream << std::string(50'000, '2');
    stream.seekp(-1, std::ios::cur);
    stream.put('3').seekp(0);
    stream << '4';
    return stream.tellp() == 1;
  };
  EXPECT_EQ(WriteFileDurably(target, writer, FileEncoding::Binary).message, "");
  std::string expected = "41";
  for (int i = 1; i < 9'999; ++i) expected += "\n1";
  EXPECT_EQ(ReadText(target), expected + std::string(49'999, '2') + '3');
  EXPECT_EQ(WriteFileDurably(target, "a\nb", FileEncoding::TextMode).message, "");
  EXPECT_EQ(ReadText(target),
            std::filesystem::path::preferred_separator == '/' ? "a\nb" : "a\r\nb");
}

TEST_F(FileWriteTest, WritesABareNameInTheWorkingFolder) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(home.Path());
  InjectWriteFailure(WriteStep::CreateFolder);  // Never reached: there is no folder to make.
  EXPECT_EQ(Status("solto"), WriteStatus::Ok);
  std::filesystem::current_path(before);
  EXPECT_EQ(ReadText(home.Path() / "solto"), "x");
}

TEST_F(FileWriteTest, AForcedFailureKeepsTheEarlierFileAndFiresOnce) {
  const std::string not_written =
      "não foi possível gravar nome.json (disco cheio ou pasta sem permissão).";
  const struct {
    WriteStep step;
    WriteStatus status;
    std::string message;
  } kCases[] = {
      {WriteStep::CreateFolder, WriteStatus::FolderFailed,
       "não foi possível criar a pasta de nome.json."},
      {WriteStep::OpenTemporary, WriteStatus::WriteFailed, not_written},
      {WriteStep::WriteTemporary, WriteStatus::WriteFailed, not_written},
      {WriteStep::SyncTemporary, WriteStatus::WriteFailed,
       "não foi possível gravar nome.json no disco (o disco recusou a sincronização). O arquivo "
       "anterior foi preservado."},
      {WriteStep::ReplaceTarget, WriteStatus::ReplaceFailed,
       "não foi possível substituir nome.json; ele pode estar protegido contra escrita ou aberto "
       "em outro programa. O arquivo anterior foi preservado."}};
  for (const auto& c : kCases) {
    WriteText(target, "antes");
    InjectWriteFailure(c.step);
    const WriteResult result = WriteFileDurably(target, "depois", FileEncoding::Binary);
    EXPECT_EQ(result.status, c.status);
    EXPECT_EQ(result.message, c.message);
    EXPECT_EQ(result.path, platform::PathText(target));
    EXPECT_EQ(ReadText(target), "antes");
    EXPECT_FALSE(std::filesystem::exists(temporary)) << c.message;
    EXPECT_EQ(Status(target), WriteStatus::Ok);
  }
}

TEST_F(FileWriteTest, RealFailuresComeFirstAndLeaveAForcedOneArmed) {
  InjectWriteFailure(WriteStep::SyncTemporary);
  WriteText(home.Path() / "arquivo", "não é pasta");
  EXPECT_EQ(Status(home.Path() / "arquivo" / "x"), WriteStatus::FolderFailed);
  std::filesystem::create_directories(home.Path() / "y.tmp" / "dentro");
  EXPECT_EQ(Status(home.Path() / "y"), WriteStatus::WriteFailed);
  EXPECT_EQ(Status(target), WriteStatus::WriteFailed);  // The forced one.
  std::filesystem::create_directories(target / "dentro");
  std::string error;
  EXPECT_FALSE(WriteFileReplacing(target, "x", error));
  EXPECT_EQ(error.substr(0, 40), "não foi possível substituir nome.json;");
  EXPECT_FALSE(std::filesystem::exists(temporary));
}

TEST_F(FileWriteTest, AWriterThatGivesUpDecidesTheMessage) {
  const auto write = [&](const std::string& reason, bool produced) {
    const auto writer = [&](std::ostream& stream, std::string& text) {
      stream.setstate(std::ios::failbit);  // The writer's word outweighs the stream's state.
      text = reason;
      return produced;
    };
    return WriteFileDurably(target, writer, FileEncoding::Binary);
  };
  EXPECT_EQ(write("", false).message, "o conteúdo de nome.json não pôde ser produzido.");
  EXPECT_EQ(write("x", false).message, "x");
  EXPECT_EQ(write("x", false).status, WriteStatus::ContentFailed);
  EXPECT_EQ(write("x", true).status, WriteStatus::WriteFailed);
  EXPECT_TRUE(std::filesystem::is_empty(target.parent_path()));
}

TEST_F(FileWriteTest, FilesAreReadUpToALimit) {
  std::string content;
  for (const auto& [size, read] :
       {std::pair(platform::kLargestFile, true), {platform::kLargestFile + 1, false}}) {
    WriteText(target, "");
    std::filesystem::resize_file(target, size);
    EXPECT_EQ(platform::ReadWholeFile(target, content), read);
    EXPECT_EQ(content.size(), read ? size : 0);
  }
  // Linux: a regular file that claims to be empty and goes on for hundreds of gigabytes.
  EXPECT_FALSE(platform::ReadWholeFile("/proc/self/pagemap", content));
}

}  // namespace
}  // namespace zorvik::core
