#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "core/platform/streams.h"

namespace zorvik::core::platform {
namespace {

// The two ends of what a client may give a server as standard input.
struct Ends {
  int reader = -1;
  int writer = -1;
};

Ends MakePipe() {
  std::array<int, 2> fds = {-1, -1};
  return pipe(fds.data()) == 0 ? Ends{fds[0], fds[1]} : Ends{};
}

Ends MakeSocketPair() {
  std::array<int, 2> fds = {-1, -1};
  return socketpair(AF_UNIX, SOCK_STREAM, 0, fds.data()) == 0 ? Ends{fds[0], fds[1]} : Ends{};
}

class StreamsPosixTest : public testing::TestWithParam<Ends (*)()> {
 protected:
  StreamsPosixTest() { std::signal(SIGPIPE, SIG_IGN); }
  ~StreamsPosixTest() override {
    close(ends.reader);
    close(ends.writer);
  }
  void CloseEnd(int& fd) {
    close(fd);
    fd = -1;
  }

  Ends ends = GetParam()();
  InputStream input = InputStream::Borrow(ends.reader);
};
INSTANTIATE_TEST_SUITE_P(PipesAndSockets, StreamsPosixTest,
                         testing::Values(&MakePipe, &MakeSocketPair));

TEST_P(StreamsPosixTest, PeekFindsTheEndOnlyBehindTheLastByte) {
  ASSERT_TRUE(input.IsPipe());
  std::size_t count = 99;
  EXPECT_TRUE(input.Peek(count));
  EXPECT_EQ(count, 0U);
  ASSERT_EQ(write(ends.writer, "abc", 3), 3);
  CloseEnd(ends.writer);
  EXPECT_TRUE(input.Peek(count));
  EXPECT_EQ(count, 3U);
  std::array<char, 8> bytes;
  EXPECT_TRUE(input.Read(bytes.data(), bytes.size(), count));
  EXPECT_EQ(std::string(bytes.data(), count), "abc");
  EXPECT_FALSE(input.Peek(count));
}

TEST_P(StreamsPosixTest, PeekNeverMissesWhatWasWrittenJustBeforeTheEnd) {
  std::vector<Ends> rounds(300);
  for (Ends& round : rounds) round = GetParam()();
  std::thread writer([&rounds] {
    for (const Ends& round : rounds) {
      EXPECT_EQ(write(round.writer, "x", 1), 1);
      close(round.writer);
    }
  });
  for (const Ends& round : rounds) {
    std::size_t count = 0;
    bool open = true;
    while (open && count == 0) open = InputStream::Borrow(round.reader).Peek(count);
    EXPECT_TRUE(open);
    close(round.reader);
  }
  writer.join();
}

TEST_P(StreamsPosixTest, AStreamSetNotToBlockIsWaitedForAndSignalsAreOverlooked) {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, nullptr);
  fcntl(ends.reader, F_SETFL, O_NONBLOCK);
  fcntl(ends.writer, F_SETFL, O_NONBLOCK);
  const std::string sent(2'000'000, 'q');
  std::string received;
  std::thread reader([this, &received] {
    std::array<char, 4096> bytes;
    std::size_t count = 0;
    while (input.Read(bytes.data(), bytes.size(), count) && count > 0) {
      received.append(bytes.data(), count);
    }
  });
  for (int i = 0; i < 20; ++i) {
    usleep(1000);
    pthread_kill(reader.native_handle(), SIGUSR1);
  }
  std::string_view left = sent;
  std::size_t count = 0;
  while (!left.empty()) {
    ASSERT_TRUE(OutputStream::Borrow(ends.writer).Write(left.data(), left.size(), count));
    left.remove_prefix(count);
  }
  CloseEnd(ends.writer);
  reader.join();
  EXPECT_TRUE(received == sent);
}

TEST_P(StreamsPosixTest, AWriteThatNobodyReadsFails) {
  CloseEnd(ends.reader);
  std::size_t count = 0;
  EXPECT_FALSE(OutputStream::Borrow(ends.writer).Write("x", 1, count));
}

TEST(StreamsPosixTest, APeerThatGoesWithoutReadingEndsTheInputAfterItsBytes) {
  const Ends ends = MakeSocketPair();
  const InputStream input = InputStream::Borrow(ends.reader);
  ASSERT_EQ(write(ends.reader, "unread", 6), 6);
  ASSERT_EQ(write(ends.writer, "z", 1), 1);
  close(ends.writer);
  std::size_t count = 0;
  char byte = 0;
  EXPECT_TRUE(input.Peek(count));
  EXPECT_TRUE(input.Read(&byte, 1, count));
  EXPECT_EQ(byte, 'z');
  EXPECT_FALSE(input.Peek(count));
  close(ends.reader);
}

// Ends the process with 0 when no file opened later is taken for a missing standard stream.
[[noreturn]] void RunWithoutStandardStreams() {
  close(STDIN_FILENO);
  close(STDOUT_FILENO);
  PrepareStandardStreams();
  const bool kept_apart = open("/dev/null", O_RDWR) > STDERR_FILENO;
  const bool missing = !InputStream::Standard().Valid() && !OutputStream::Standard().Valid();
  std::_Exit(kept_apart && missing ? 0 : 1);
}

TEST(StreamsPosixTest, MissingStandardStreamsStayMissing) {
  EXPECT_EXIT(RunWithoutStandardStreams(), testing::ExitedWithCode(0), "");
  EXPECT_TRUE(OutputStream::Standard().Valid());
  const int file = open("/dev/null", O_RDONLY);
  EXPECT_FALSE(InputStream::Borrow(file).IsPipe());
  close(file);
}

}  // namespace
}  // namespace zorvik::core::platform
