#include "core/platform/streams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <tuple>

#include "tests/support/byte_pipe.h"

namespace zorvik::core::platform {
namespace {

using tests::BytePipe;

TEST(StreamsPosixTest, PeekNeverMissesWhatWasWrittenJustBeforeTheEnd) {
  // By the time the writer has started, the reader is peeking, so that they often meet.
  for (int round = 0; round < 200; ++round) {
    BytePipe pipe(round % 2 == 0 ? BytePipe::Kind::Pipe : BytePipe::Kind::SocketPair);
    std::thread writer([&pipe] {
      std::size_t written = 0;
      EXPECT_TRUE(pipe.Writer().Write("x", 1, written));
      pipe.CloseWriter();
    });
    std::size_t count = 0;
    while (count == 0 && pipe.Reader().Peek(count)) {
    }
    EXPECT_EQ(count, 1U) << round;
    writer.join();
  }
}

TEST(StreamsPosixTest, ReadingOverlooksSignalsAndWaitsThoughSetNotToBlock) {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, nullptr);
  for (const int flags : {0, O_NONBLOCK}) {
    BytePipe pipe;
    fcntl(static_cast<int>(pipe.reader.Get()), F_SETFL, flags);
    std::size_t count = 0;
    char byte = 0;
    std::thread reader([&] { EXPECT_TRUE(pipe.Reader().Read(&byte, 1, count)) << flags; });
    for (int i = 0; i < 20; ++i) {
      usleep(1000);
      pthread_kill(reader.native_handle(), SIGUSR1);
    }
    EXPECT_TRUE(pipe.Writer().Write("z", 1, count));
    reader.join();
    EXPECT_EQ(byte, 'z');
    pipe.CloseWriter();
    errno = EINTR;  // As a call before may leave it.
    EXPECT_TRUE(pipe.Reader().Read(&byte, 1, count));
    EXPECT_EQ(count, 0U);
  }
}

TEST(StreamsPosixTest, APeerThatGoesWithoutReadingEndsTheInputAfterItsBytes) {
  BytePipe pair(BytePipe::Kind::SocketPair);
  std::size_t count = 0;
  ASSERT_TRUE(OutputStream::Borrow(pair.reader.Get()).Write("unread", 6, count));
  ASSERT_TRUE(pair.Writer().Write("z", 1, count));
  pair.CloseWriter();
  char byte = 0;
  EXPECT_TRUE(pair.Reader().Peek(count));
  EXPECT_TRUE(pair.Reader().Read(&byte, 1, count));
  EXPECT_EQ(byte, 'z');
  EXPECT_FALSE(pair.Reader().Peek(count));
}

TEST(StreamsPosixTest, AnUrgentByteIsNotWaitedFor) {
  BytePipe pair(BytePipe::Kind::SocketPair);
  const int writer = static_cast<int>(pair.writer.Get());
  std::size_t count = 1;
  if (send(writer, "x", 1, MSG_OOB) != 1) GTEST_SKIP() << "this system has none";
  EXPECT_TRUE(pair.Reader().Peek(count));
  EXPECT_EQ(count, 0U);
  WaitSources sources;
  pair.Reader().AddTo(sources);
  const auto begin = std::chrono::steady_clock::now();
  WaitForInput(sources, 30);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(25));
  pair.CloseWriter();
  EXPECT_FALSE(pair.Reader().Peek(count));
}

// Ends the process with 0 when no file opened later is taken for a missing standard stream.
[[noreturn]] void RunWithoutStandardStreams() {
  close(STDIN_FILENO);
  close(STDOUT_FILENO);
  close(STDERR_FILENO);
  // Root finds no devices from here on.
  std::ignore = chroot("/proc/self/fdinfo");
  PrepareStandardStreams();
  const bool kept_apart = open("/", O_RDONLY) > STDERR_FILENO;
  const bool missing = !InputStream::Standard().Valid() && !OutputStream::Standard().Valid();
  std::_Exit(kept_apart && missing ? 0 : 1);
}

TEST(StreamsPosixTest, MissingStandardStreamsStayMissing) {
  EXPECT_EXIT(RunWithoutStandardStreams(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zorvik::core::platform
