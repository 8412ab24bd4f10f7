#include "core/platform/streams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace zorvik::core::platform {
namespace {

// The two ends of what a client may give a server as standard input: a pipe or a socket pair.
struct Ends {
  explicit Ends(bool socket) {
    EXPECT_EQ(socket ? socketpair(AF_UNIX, SOCK_STREAM, 0, fds.data()) : pipe(fds.data()), 0);
  }
  int Reader() const { return fds[0]; }
  int Writer() const { return fds[1]; }
  InputStream Input() const { return InputStream::Borrow(Reader()); }

  std::array<int, 2> fds = {-1, -1};
};

class StreamsPosixTest : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(PipesAndSockets, StreamsPosixTest, testing::Bool());

TEST_P(StreamsPosixTest, PeekNeverMissesWhatWasWrittenJustBeforeTheEnd) {
  // The reader lets the writer into a round once it is peeking there, so that they often meet.
  std::atomic<int> entered = 0;
  std::vector<Ends> rounds;
  rounds.reserve(100);
  while (rounds.size() < 100) rounds.emplace_back(GetParam());
  std::thread writer([&] {
    int round = 0;
    for (const Ends& ends : rounds) {
      for (++round; entered < round;) std::this_thread::yield();
      EXPECT_EQ(write(ends.Writer(), "x", 1), 1);
      close(ends.Writer());
    }
  });
  for (const Ends& ends : rounds) {
    ++entered;
    std::size_t count = 0;
    while (count == 0 && ends.Input().Peek(count)) {
    }
    EXPECT_EQ(count, 1U);
    close(ends.Reader());
  }
  writer.join();
}

TEST_P(StreamsPosixTest, AStreamSetNotToBlockIsWaitedForAndSignalsAreOverlooked) {
  PrepareStandardStreams();
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, nullptr);
  const Ends ends(GetParam());
  fcntl(ends.Writer(), F_SETFL, O_NONBLOCK);
  std::string received;
  std::thread reader([&] {
    std::array<char, 4096> bytes;
    std::size_t count = 0;
    while (ends.Input().Read(bytes.data(), bytes.size(), count) && count > 0)
      received.append(bytes.data(), count);
    close(ends.Reader());
  });
  for (int i = 0; i < 20; ++i) {
    usleep(1000);
    pthread_kill(reader.native_handle(), SIGUSR1);
  }
  fcntl(ends.Reader(), F_SETFL, O_NONBLOCK);
  const std::string sent(2'000'000, 'q');
  std::string_view left = sent;
  std::size_t count = 0;
  while (!left.empty() &&
         OutputStream::Borrow(ends.Writer()).Write(left.data(), left.size(), count))
    left.remove_prefix(count);
  close(ends.Writer());
  reader.join();
  EXPECT_TRUE(received == sent);
}

TEST(StreamsPosixTest, APeerThatGoesWithoutReadingEndsTheInputAfterItsBytes) {
  const Ends ends(true);
  ASSERT_EQ(write(ends.Reader(), "unread", 6), 6);
  ASSERT_EQ(write(ends.Writer(), "z", 1), 1);
  close(ends.Writer());
  std::size_t count = 0;
  char byte = 0;
  EXPECT_TRUE(ends.Input().Peek(count));
  EXPECT_TRUE(ends.Input().Read(&byte, 1, count));
  EXPECT_EQ(byte, 'z');
  EXPECT_FALSE(ends.Input().Peek(count));
  close(ends.Reader());
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
  EXPECT_FALSE(InputStream::Borrow(open("/dev/null", O_RDONLY)).IsPipe());
}

}  // namespace
}  // namespace zorvik::core::platform
