#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "core/win32.h"
#include "tests/support/child_process.h"
#include "tests/support/mcp_client.h"
#include "tests/support/temporary_home.h"

namespace zorvik::tests {
namespace {

TEST(SampleEditorPosixTest, StaysOpenWithoutAnybodyAtItsInputUntilASignalEndsIt) {
  const TemporaryHome home;
  WriteText(home.Path() / "acts", "criar zorvik_rocha 5 6\n");
  McpClient client;
  const struct {
    std::filesystem::path input;
    int signal;
  } kCases[] = {{"", SIGTERM}, {"/dev/null", SIGINT}, {home.Path() / "acts", SIGHUP}};
  for (const auto& [input, signal] : kCases) {
    ChildProcess editor({.program = "zorvik_sample_editor", .input_file = input});
    EXPECT_TRUE(editor.ReadLine().value_or("").starts_with("pronto "));
    EXPECT_TRUE(input.filename() != "acts" || editor.ReadLine() == "feito 2");
    EXPECT_EQ(Outcome(client.Call("world_info")), "ok") << input;
    kill(static_cast<pid_t>(editor.Id()), signal);
    EXPECT_EQ(editor.Wait(), 0) << input;
    EXPECT_TRUE(std::filesystem::is_empty(home.Editors())) << input;
  }
}

// What the program writes to its terminal up to and with `end`.
std::string ReadUpTo(int terminal, const std::string& end) {
  std::string text;
  for (char byte = 0; !text.ends_with(end) && read(terminal, &byte, 1) == 1;) text += byte;
  return text;
}

TEST(SampleEditorPosixTest, ServesWhileItWaitsForTheKeyboard) {
  const TemporaryHome home;
  const std::string program = core::win32::ExecutablePath().parent_path() / "zorvik_sample_editor";
  for (const char end : {'\x03', '\x04'}) {  // Ctrl-C and Ctrl-D.
    int terminal = -1;
    const pid_t editor = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (editor == 0) _exit(execl(program.c_str(), program.c_str(), "--id", "vale", nullptr));
    ReadUpTo(terminal, "pronto vale\r\n");
    EXPECT_EQ(Outcome(McpClient().Call("world_info")), "ok");
    EXPECT_EQ(write(terminal, "criar zorvik_rocha 5 6\n", 23), 23);
    EXPECT_TRUE(ReadUpTo(terminal, "feito 2\r\n").ends_with("feito 2\r\n"));
    EXPECT_EQ(write(terminal, &end, 1), 1);
    int status = -1;
    EXPECT_EQ(waitpid(editor, &status, 0), editor);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(std::filesystem::is_empty(home.Editors()));
    close(terminal);
  }
}

}  // namespace
}  // namespace zorvik::tests
