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
    std::array<int, 2> fds = {-1, -1};
    EXPECT_EQ(socket ? socketpair(AF_UNIX, SOCK_STREAM, 0, fds.data()) : pipe(fds.data()), 0);
    reader = fds[0];
    writer = fds[1];
  }
  int reader;
  int writer;
};

class StreamsPosixTest : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(PipesAndSockets, StreamsPosixTest, testing::Bool());

TEST_P(StreamsPosixTest, PeekNeverMissesWhatWasWrittenJustBeforeTheEnd) {
  constexpr std::size_t kRounds = 300;
  std::vector<Ends> rounds;
  rounds.reserve(kRounds);
  while (rounds.size() < kRounds) rounds.emplace_back(GetParam());
  // The reader lets the writer into a round once it is peeking there, so that they often meet.
  std::atomic<std::size_t> entered = 0;
  std::thread writer([&rounds, &entered] {
    for (std::size_t i = 0; i < rounds.size(); ++i) {
      while (entered <= i) std::this_thread::yield();
      EXPECT_EQ(write(rounds[i].writer, "x", 1), 1);
      close(rounds[i].writer);
    }
  });
  for (const Ends& round : rounds) {
    ++entered;
    std::size_t count = 0;
    bool open = true;
    while (open && count == 0) open = InputStream::Borrow(round.reader).Peek(count);
    EXPECT_TRUE(open);
    close(round.reader);
  }
  writer.join();
}

TEST_P(StreamsPosixTest, AStreamSetNotToBlockIsWaitedForAndSignalsAreOverlooked) {
  PrepareStandardStreams();
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, nullptr);
  const Ends ends(GetParam());
  fcntl(ends.writer, F_SETFL, O_NONBLOCK);
  std::atomic<bool> reading = false;
  std::string received;
  std::thread reader([&] {
    std::array<char, 4096> bytes;
    std::size_t count = 0;
    reading = true;
    while (InputStream::Borrow(ends.reader).Read(bytes.data(), bytes.size(), count) && count > 0)
      received.append(bytes.data(), count);
    close(ends.reader);
  });
  while (!reading) std::this_thread::yield();
  for (int i = 0; i < 20; ++i) {
    usleep(1000);
    pthread_kill(reader.native_handle(), SIGUSR1);
  }
  fcntl(ends.reader, F_SETFL, O_NONBLOCK);
  const std::string sent(2'000'000, 'q');
  std::string_view left = sent;
  std::size_t count = 0;
  while (OutputStream::Borrow(ends.writer).Write(left.data(), left.size(), count)) {
    left.remove_prefix(count);
    if (left.empty()) break;
  }
  close(ends.writer);
  reader.join();
  EXPECT_TRUE(received == sent);
}

TEST(StreamsPosixTest, APeerThatGoesWithoutReadingEndsTheInputAfterItsBytes) {
  const Ends ends(true);
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
